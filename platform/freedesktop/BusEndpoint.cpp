#include "platform/freedesktop/BusEndpoint.h"

#include <memory>
#include <string_view>

namespace vendril {
namespace {

constexpr const char* kIntrospectionXml = R"(
<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate">
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="Open">
      <arg type="as" name="uris" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg type="s" name="action_name" direction="in"/>
      <arg type="av" name="parameter" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
  </interface>
</node>)";

using NodeInfoPtr = std::unique_ptr<GDBusNodeInfo, ReleaseWith<g_dbus_node_info_unref>>;
using VariantIterPtr = std::unique_ptr<GVariantIter, ReleaseWith<g_variant_iter_free>>;

void deliverAll(GVariant* parameters, DesktopUrlEvents& events) {
  GVariantIter* uris = nullptr;
  g_variant_get(parameters, "(asa{sv})", &uris, nullptr);
  const VariantIterPtr owner(uris);
  const gchar* uri = nullptr;
  while (g_variant_iter_next(uris, "&s", &uri) != FALSE) {
    events.deliver(uri);
  }
}

void onMethodCall(GDBusConnection* /*connection*/, const gchar* /*sender*/,
                  const gchar* /*objectPath*/, const gchar* /*interface*/, const gchar* method,
                  GVariant* parameters, GDBusMethodInvocation* invocation, gpointer events) {
  if (std::string_view(method) == "Open") {
    deliverAll(parameters, *static_cast<DesktopUrlEvents*>(events));
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

}  // namespace

std::string applicationObjectPath(const std::string& busName) {
  std::string path = "/" + busName;
  for (char& character : path) {
    if (character == '.') {
      character = '/';
    } else if (character == '-') {
      character = '_';
    }
  }
  return path;
}

BusEndpoint::BusEndpoint(GDBusConnection* connection, const std::string& objectPath,
                         DesktopUrlEvents& events)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))) {
  static constexpr GDBusInterfaceVTable kMethods{onMethodCall, nullptr, nullptr, {}};
  const NodeInfoPtr node(g_dbus_node_info_new_for_xml(kIntrospectionXml, nullptr));
  registration_ = g_dbus_connection_register_object(
      connection, objectPath.c_str(),
      g_dbus_node_info_lookup_interface(node.get(), kApplicationInterface), &kMethods, &events,
      nullptr, nullptr);
}

BusEndpoint::~BusEndpoint() {
  g_dbus_connection_unregister_object(connection_.get(), registration_);
}

}  // namespace vendril
