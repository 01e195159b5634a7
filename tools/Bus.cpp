#include "tools/Bus.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <cstdlib>

#include "tools/Transcript.h"

namespace vendril::tools {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// True when a part of the address has a bus started where none is.
bool startsBus(const std::string& address) {
  constexpr const char* kAutolaunch = "autolaunch:";
  return address.starts_with(kAutolaunch) ||
         address.find(std::string(";") + kAutolaunch) != std::string::npos;
}

/// Where GIO looks: the address in the environment, else the socket that systemd makes.
bool isNamed() {
  const std::string address = variable("DBUS_SESSION_BUS_ADDRESS");
  if (!address.empty()) {
    return !startsBus(address);
  }
  struct stat status {};
  const std::string runtime = variable("XDG_RUNTIME_DIR");
  return !runtime.empty() && stat((runtime + "/bus").c_str(), &status) == 0 &&
         S_ISSOCK(status.st_mode);
}

GVariantPtr ask(const Bus& bus, const char* method, GVariant* parameters, const char* replyType) {
  constexpr std::chrono::milliseconds limit = kBusAnswerLimit;
  return GVariantPtr(g_dbus_connection_call_sync(
      bus.connection->connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
      "org.freedesktop.DBus", method, parameters, G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
      static_cast<gint>(limit.count()), nullptr, nullptr));
}

}  // namespace

Bus Bus::find() {
  Bus bus;
  if (!isNamed()) {
    return bus;
  }
  // Lives as long as the process, because the connection keeps it.
  static Transcript& transcript = *new Transcript();
  // A tool asks on a bus that has gone as well; the answer is none then.
  bus.connection = SessionBus::connect(transcript, [] {});
  bus.state = bus.connection ? State::reached : State::unreachable;
  if (!bus.connection && !transcript.messages().empty()) {
    bus.error = transcript.messages().back();
  }
  return bus;
}

std::optional<pid_t> Bus::ownerOf(const std::string& name) const {
  const GVariantPtr reply = connection ? ask(*this, "GetConnectionUnixProcessID",
                                             g_variant_new("(s)", name.c_str()), "(u)")
                                       : nullptr;
  if (!reply) {
    return std::nullopt;
  }
  guint32 process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  return static_cast<pid_t>(process);
}

bool Bus::canStart(const std::string& name) const {
  const GVariantPtr reply =
      connection ? ask(*this, "ListActivatableNames", nullptr, "(as)") : nullptr;
  if (!reply) {
    return false;
  }
  gchar** names = nullptr;
  g_variant_get(reply.get(), "(^as)", &names);
  const GStrvPtr owner(names);
  return g_strv_contains(names, name.c_str()) != FALSE;
}

}  // namespace vendril::tools
