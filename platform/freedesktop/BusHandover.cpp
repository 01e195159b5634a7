#include "platform/freedesktop/BusHandover.h"

#include <algorithm>

#include "platform/freedesktop/BusEndpoint.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

GVariant* openParameters(const std::vector<std::string>& links) {
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
  for (const std::string& link : links) {
    // The bus carries UTF-8 alone. A link that is none is no URL either, and neither is the text
    // that takes its place, so the running process reports it just as if it had come unchanged.
    const GCharPtr text(g_utf8_make_valid(link.data(), static_cast<gssize>(link.size())));
    g_variant_builder_add(&uris, "s", text.get());
  }
  return g_variant_new("(asa{sv})", &uris, nullptr);
}

Handover outcomeOf(const GErrorSlot& error) {
  if (error.matches(G_IO_ERROR, G_IO_ERROR_CLOSED)) {
    return Handover::busGone;
  }
  const bool ownerGone = error.matches(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
                         error.matches(G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
                         error.matches(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY);
  return ownerGone ? Handover::ownerGone : Handover::unanswered;
}

}  // namespace

HandoverAnswer openOnBus(GDBusConnection* connection, const std::string& busName,
                         const std::vector<std::string>& links, std::chrono::milliseconds limit,
                         Activation activation) {
  const char* method = links.empty() ? "Activate" : "Open";
  GVariant* parameters = links.empty() ? g_variant_new("(a{sv})", nullptr) : openParameters(links);
  const auto timeout = std::max<gint>(1, static_cast<gint>(limit.count()));
  const GDBusCallFlags flags =
      activation == Activation::never ? G_DBUS_CALL_FLAGS_NO_AUTO_START : G_DBUS_CALL_FLAGS_NONE;
  GErrorSlot error;
  const GVariantPtr reply(g_dbus_connection_call_sync(
      connection, busName.c_str(), applicationObjectPath(busName).c_str(), kApplicationInterface,
      method, parameters, G_VARIANT_TYPE_UNIT, flags, timeout, nullptr, error.out()));
  return reply ? HandoverAnswer{Handover::done, ""}
               : HandoverAnswer{outcomeOf(error), error.message(),
                                error.matches(G_IO_ERROR, G_IO_ERROR_TIMED_OUT)};
}

Handover handOver(GDBusConnection* connection, const std::string& busName,
                  const std::vector<std::string>& links, std::chrono::milliseconds limit) {
  return openOnBus(connection, busName, links, limit, Activation::never).outcome;
}

}  // namespace vendril
