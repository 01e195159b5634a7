#include "alert/DarkStyle.h"

#include <gtk/gtk.h>

#include <string_view>

namespace vendril {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettings = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr const char* kPreferDark = "gtk-application-prefer-dark-theme";
// The portal's values; 0 and all others are no preference.
constexpr guint32 kDark = 1;
constexpr guint32 kLight = 2;
// A portal that takes longer does not keep the alert from the user.
constexpr int kPatienceMs = 1000;

/// Applies a color-scheme, whatever number of variants it is wrapped in (the portal's Read wraps
/// it twice, its signal once). Consumes `value`.
void apply(GVariant* value) {
  while (g_variant_is_of_type(value, G_VARIANT_TYPE_VARIANT)) {
    GVariant* inner = g_variant_get_variant(value);
    g_variant_unref(value);
    value = inner;
  }
  const bool known = g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) != 0;
  const guint32 scheme = known ? g_variant_get_uint32(value) : 0;
  g_variant_unref(value);

  GtkSettings* settings = gtk_settings_get_default();
  if (scheme == kDark || scheme == kLight) {
    g_object_set(settings, kPreferDark, static_cast<gboolean>(scheme == kDark), nullptr);
  } else {
    gtk_settings_reset_property(settings, kPreferDark);
  }
}

void settingChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                    GVariant* parameters, gpointer) {
  const gchar* key = nullptr;
  GVariant* value = nullptr;
  if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")) == 0) {
    return;
  }
  g_variant_get(parameters, "(&s&s@v)", nullptr, &key, &value);
  if (std::string_view(key) == kKey) {
    apply(value);
  } else {
    g_variant_unref(value);
  }
}

void applyCurrent(GDBusConnection* bus) {
  GVariant* reply = g_dbus_connection_call_sync(
      bus, kPortal, kPortalPath, kSettings, "Read", g_variant_new("(ss)", kNamespace, kKey),
      G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, kPatienceMs, nullptr, nullptr);
  if (reply != nullptr) {
    apply(g_variant_get_child_value(reply, 0));
    g_variant_unref(reply);
  }
}

}  // namespace

DarkStyle::DarkStyle(GDBusConnection* bus) : bus_(bus) {
  if (bus_ == nullptr) {
    return;
  }
  subscription_ = g_dbus_connection_signal_subscribe(
      bus_, kPortal, kSettings, "SettingChanged", kPortalPath, kNamespace, G_DBUS_SIGNAL_FLAGS_NONE,
      settingChanged, nullptr, nullptr);
  applyCurrent(bus_);
}

DarkStyle::~DarkStyle() {
  if (bus_ != nullptr) {
    g_dbus_connection_signal_unsubscribe(bus_, subscription_);
  }
}

}  // namespace vendril
