#include "support/BusClient.h"

#include <algorithm>
#include <stdexcept>

namespace vendril {
namespace {

constexpr gint kLimitMilliseconds = 20'000;

GObjectPtr<GDBusConnection> connectTo(const std::string& address) {
  constexpr auto kFlags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  GErrorSlot error;
  GObjectPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address.c_str(), kFlags, nullptr, nullptr, error.out()));
  if (!connection) {
    throw std::runtime_error(error.message());
  }
  return connection;
}

}  // namespace

BusClient::BusClient(const std::string& address) : connection_(connectTo(address)) {}

BusClient::~BusClient() {
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

std::string BusClient::call(const std::string& name, const std::string& path, const char* method,
                            GVariant* parameters) const {
  GErrorSlot error;
  const GVariantPtr reply(g_dbus_connection_call_sync(
      connection_.get(), name.c_str(), path.c_str(), "org.freedesktop.Application", method,
      parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, kLimitMilliseconds, nullptr, error.out()));
  if (reply) {
    return "";
  }
  const GCharPtr errorName(g_dbus_error_get_remote_error(error.get()));
  return errorName ? errorName.get() : error.message();
}

std::string BusClient::open(const std::string& name, const std::string& path,
                            const std::vector<std::string>& links) const {
  return call(name, path, "Open", openParameters(links));
}

std::optional<pid_t> BusClient::ownerOf(const std::string& name) const {
  const GVariantPtr reply =
      callBus("GetConnectionUnixProcessID", g_variant_new("(s)", name.c_str()));
  if (!reply) {
    return std::nullopt;
  }
  guint32 pid = 0;
  g_variant_get(reply.get(), "(u)", &pid);
  return static_cast<pid_t>(pid);
}

std::size_t BusClient::connectionCount() const {
  const GVariantPtr reply = callBus("ListNames", nullptr);
  gchar** names = nullptr;
  g_variant_get(reply.get(), "(^as)", &names);
  const GStrvPtr owner(names);
  return static_cast<std::size_t>(std::count_if(names, names + g_strv_length(names),
                                                [](const gchar* name) { return *name == ':'; }));
}

GVariantPtr BusClient::callBus(const char* method, GVariant* parameters) const {
  return GVariantPtr(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, kLimitMilliseconds, nullptr, nullptr));
}

GVariant* openParameters(const std::vector<std::string>& links) {
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
  for (const std::string& link : links) {
    g_variant_builder_add(&uris, "s", link.c_str());
  }
  return g_variant_new("(asa{sv})", &uris, nullptr);
}

}  // namespace vendril
