#include "support/ScriptedBus.h"

#include <stdexcept>
#include <string_view>

namespace vendril {
namespace {

/// RequestName's answer that somebody else owns the name.
constexpr guint32 kNameExists = 3;

}  // namespace

ScriptedBus::ScriptedBus(const std::string& path) {
  const GCharPtr guid(g_dbus_generate_guid());
  GErrorSlot error;
  server_.reset(g_dbus_server_new_sync(("unix:path=" + path).c_str(), G_DBUS_SERVER_FLAGS_NONE,
                                       guid.get(), nullptr, nullptr, error.out()));
  if (!server_) {
    throw std::runtime_error(error.message());
  }
  g_signal_connect(server_.get(), "new-connection", G_CALLBACK(onConnection), this);
  g_dbus_server_start(server_.get());
}

ScriptedBus::~ScriptedBus() {
  g_dbus_server_stop(server_.get());
  if (connection_) {
    g_dbus_connection_remove_filter(connection_.get(), filter_);
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
  }
}

std::string ScriptedBus::address() const {
  return g_dbus_server_get_client_address(server_.get());
}

bool ScriptedBus::hasCall() const {
  const std::lock_guard lock(mutex_);
  return call_ != nullptr;
}

void ScriptedBus::answerThatOwnerHasGone() {
  const std::lock_guard lock(mutex_);
  send(g_dbus_message_new_method_error_literal(call_.get(), "org.freedesktop.DBus.Error.NoReply",
                                               "the owner has ended"));
}

gboolean ScriptedBus::onConnection(GDBusServer* /*server*/, GDBusConnection* connection,
                                   gpointer bus) {
  auto& self = *static_cast<ScriptedBus*>(bus);
  self.connection_.reset(G_DBUS_CONNECTION(g_object_ref(connection)));
  self.filter_ = g_dbus_connection_add_filter(connection, onMessage, bus, nullptr);
  return TRUE;
}

// Takes every message that comes in out of GDBus's hands. Runs on a thread of GDBus.
GDBusMessage* ScriptedBus::onMessage(GDBusConnection* /*connection*/, GDBusMessage* message,
                                     gboolean incoming, gpointer bus) {
  if (incoming == FALSE) {
    return message;
  }
  static_cast<ScriptedBus*>(bus)->take(message);
  g_object_unref(message);
  return nullptr;
}

void ScriptedBus::take(GDBusMessage* message) {
  const gchar* const member = g_dbus_message_get_member(message);
  const std::string_view method(member != nullptr ? member : "");
  if (method == "RequestName" && nameRequests_++ > 0) {
    return;
  }
  if (method == "Open") {
    const std::lock_guard lock(mutex_);
    call_.reset(G_DBUS_MESSAGE(g_object_ref(message)));
    return;
  }
  GDBusMessage* const reply = g_dbus_message_new_method_reply(message);
  if (method == "Hello") {
    g_dbus_message_set_body(reply, g_variant_new("(s)", ":1.1"));
  } else if (method == "RequestName") {
    g_dbus_message_set_body(reply, g_variant_new("(u)", kNameExists));
  }
  send(reply);
}

void ScriptedBus::send(GDBusMessage* reply) const {
  const GObjectPtr<GDBusMessage> owner(reply);
  g_dbus_connection_send_message(connection_.get(), reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                 nullptr);
}

}  // namespace vendril
