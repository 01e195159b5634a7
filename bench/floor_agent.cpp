// The least that a link handler on GIO and libcurl can do: it takes links through
// org.freedesktop.Application and posts a fixed body to the portal that each of them names. The
// benchmark measures the agent against it.

#include <curl/curl.h>
#include <gio/gio.h>

#include <string_view>

namespace {

constexpr const char* kBusName = "com.brelto.vendril.Floor";
constexpr const char* kObjectPath = "/com/brelto/vendril/Floor";
constexpr const char* kInterface = "org.freedesktop.Application";
constexpr const char* kIntrospection = R"(
<node>
  <interface name='org.freedesktop.Application'>
    <method name='Open'>
      <arg type='as' name='uris' direction='in'/>
      <arg type='a{sv}' name='platform_data' direction='in'/>
    </method>
  </interface>
</node>)";
constexpr const char* kBody =
    "data=%7B%22appName%22:%22Brelto%20Orvanta%203.21.0%22,%22appVersion%22:%223.21.0.64.24%22,"
    "%22isMeetMeOnly%22:true,%22meetmeCapable%22:0,%22videoCapable%22:0,%22SIPready%22:0%7D"
    "&session_id=7&command=set_data";

std::size_t dropAnswer(char* /*data*/, std::size_t size, std::size_t count, void* /*context*/) {
  return size * count;
}

void post(const char* link) {
  static CURL* const handle = curl_easy_init();
  constexpr std::string_view kParameter = "portalURI=";
  const std::size_t parameter = std::string_view(link).find(kParameter);
  if (parameter == std::string_view::npos) {
    return;
  }
  curl_easy_setopt(handle, CURLOPT_URL, link + parameter + kParameter.size());
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, kBody);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, dropAnswer);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_perform(handle);
}

void handleCall(GDBusConnection* /*connection*/, const char* /*sender*/, const char* /*path*/,
                const char* /*interface*/, const char* /*method*/, GVariant* parameters,
                GDBusMethodInvocation* invocation, void* /*context*/) {
  g_autoptr(GVariantIter) links = nullptr;
  g_variant_get(parameters, "(asa{sv})", &links, nullptr);
  const char* link = nullptr;
  while (g_variant_iter_next(links, "&s", &link) != 0) {
    post(link);
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

bool takeName(GDBusConnection* connection) {
  constexpr unsigned kDoNotQueue = 4;
  constexpr unsigned kPrimaryOwner = 1;
  g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
      connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "RequestName", g_variant_new("(su)", kBusName, kDoNotQueue), G_VARIANT_TYPE("(u)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  unsigned result = 0;
  if (reply != nullptr) {
    g_variant_get(reply, "(u)", &result);
  }
  return result == kPrimaryOwner;
}

void handOver(GDBusConnection* connection, const char* link) {
  const char* const links[] = {link, nullptr};
  g_autoptr(GVariant) reply =
      g_dbus_connection_call_sync(connection, kBusName, kObjectPath, kInterface, "Open",
                                  g_variant_new("(^asa{sv})", links, nullptr), nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  g_autoptr(GDBusConnection) connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (connection == nullptr) {
    return 1;
  }
  g_autoptr(GDBusNodeInfo) node = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
  const GDBusInterfaceVTable table = {handleCall, nullptr, nullptr, {}};
  g_dbus_connection_register_object(connection, kObjectPath, node->interfaces[0], &table, nullptr,
                                    nullptr, nullptr);
  const bool first = takeName(connection);
  if (argc > 1 && !first) {
    handOver(connection, argv[1]);
  }
  if (!first) {
    return 0;
  }
  if (argc > 1) {
    post(argv[1]);
  }
  g_autoptr(GMainLoop) loop = g_main_loop_new(nullptr, FALSE);
  g_main_loop_run(loop);
  return 0;
}
