#include "platform/freedesktop/SessionBus.h"

#include <utility>

#include "platform/MessageFormat.h"
#include "platform/freedesktop/BoundedWait.h"

namespace vendril {
namespace {

// The flag and the replies of RequestName, as the D-Bus protocol numbers them.
constexpr guint32 kDoNotQueue = 4;
constexpr guint32 kPrimaryOwner = 1;
constexpr guint32 kAlreadyOwner = 4;

constexpr auto kClientOfABus = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

}  // namespace

std::unique_ptr<SessionBus> SessionBus::connect(SystemLog& log, Gone gone) {
  GErrorSlot error;
  const GCharPtr address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, error.out()));
  if (!address) {
    log.write(formatMessage("There is no session bus: %s", error.message()));
    return nullptr;
  }
  // Not the connection that GIO shares: it ends the process when the bus goes away, until it is
  // told not to, which may be too late.
  BoundedWait wait(kBusAnswerLimit);
  g_dbus_connection_new_for_address(address.get(), kClientOfABus, nullptr, wait.cancellable(),
                                    BoundedWait::finish, wait.userData());
  GAsyncResult* result = wait.result();
  if (result == nullptr) {
    log.write("The session bus does not answer; going on without it");
    return nullptr;
  }
  GErrorSlot refusal;
  GObjectPtr<GDBusConnection> connection(
      g_dbus_connection_new_for_address_finish(result, refusal.out()));
  if (!connection) {
    log.write(formatMessage("There is no session bus: %s", refusal.message()));
    return nullptr;
  }
  return std::unique_ptr<SessionBus>(new SessionBus(std::move(connection), log, std::move(gone)));
}

SessionBus::SessionBus(GObjectPtr<GDBusConnection> connection, SystemLog& log, Gone gone)
    : connection_(std::move(connection)), log_(log), gone_(std::move(gone)) {
  closedHandler_ = g_signal_connect(connection_.get(), "closed", G_CALLBACK(onClosed), this);
  // The signal may have come when there was nobody to hear it.
  if (g_dbus_connection_is_closed(connection_.get()) != FALSE) {
    reportGone();
  }
}

SessionBus::~SessionBus() {
  g_signal_handler_disconnect(connection_.get(), closedHandler_);
}

void SessionBus::onClosed(GDBusConnection* /*connection*/, gboolean /*remotePeerVanished*/,
                          GError* /*error*/, gpointer bus) {
  static_cast<SessionBus*>(bus)->reportGone();
}

void SessionBus::reportGone() {
  if (!std::exchange(hasGone_, true)) {
    log_.write("The session bus has gone; the next link starts the application anew");
    gone_();
  }
}

SessionBus::NameRequest SessionBus::requestName(const std::string& name,
                                                std::chrono::milliseconds limit) {
  GErrorSlot error;
  const GVariantPtr reply =
      callBus("RequestName", g_variant_new("(su)", name.c_str(), kDoNotQueue), limit, error);
  if (!reply) {
    log_.write(
        formatMessage("The session bus does not give out the name %s: %s", name, error.message()));
    return NameRequest::failed;
  }
  guint32 code = 0;
  g_variant_get(reply.get(), "(u)", &code);
  return code == kPrimaryOwner || code == kAlreadyOwner ? NameRequest::granted : NameRequest::taken;
}

void SessionBus::releaseName(const std::string& name) {
  GErrorSlot ignored;
  callBus("ReleaseName", g_variant_new("(s)", name.c_str()), kBusAnswerLimit, ignored);
}

void SessionBus::flush() {
  BoundedWait wait(kBusAnswerLimit);
  g_dbus_connection_flush(connection_.get(), wait.cancellable(), BoundedWait::finish,
                          wait.userData());
  if (GAsyncResult* result = wait.result()) {
    g_dbus_connection_flush_finish(connection_.get(), result, nullptr);
  }
}

GVariantPtr SessionBus::callBus(const char* method, GVariant* parameters,
                                std::chrono::milliseconds limit, GErrorSlot& error) {
  return GVariantPtr(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      method, parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
      static_cast<gint>(limit.count()), nullptr, error.out()));
}

}  // namespace vendril
