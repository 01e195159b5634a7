// How a shown alert fits into the desktop: its dark style, and what a screen reader finds.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/AlertFixture.h"

namespace vendril {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kPortalSettings = "org.freedesktop.portal.Settings";
constexpr const char* kPortalInterface = R"(
  <node><interface name='org.freedesktop.portal.Settings'>
    <method name='Read'>
      <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/>
    </method>
  </interface></node>)";

constexpr guint32 kNoPreference = 0;
constexpr guint32 kDark = 1;
constexpr guint32 kLight = 2;
// The light background fills most of the alert's 120,000 pixels; in the dark style only its texts
// are light.
constexpr int kPixelsOfABackground = 60000;

using TestBusPtr = std::unique_ptr<GTestDBus, ReleaseWith<g_object_unref>>;

/// Shown alerts on a session bus of their own.
class AlertOnABus : public ShownAlertFixture {
 protected:
  void SetUp() override {
    bus_.reset(g_test_dbus_new(G_TEST_DBUS_NONE));
    g_test_dbus_add_service_dir(bus_.get(), makeServiceDirectory().c_str());
    g_test_dbus_up(bus_.get());
    setEnvironment("DBUS_SESSION_BUS_ADDRESS", g_test_dbus_get_bus_address(bus_.get()));
    ShownAlertFixture::SetUp();
    connection_ = connect(g_test_dbus_get_bus_address(bus_.get()));
  }

  void TearDown() override {
    connection_.reset();
    ShownAlertFixture::TearDown();
    g_test_dbus_stop(bus_.get());
  }

  /// The bus starts nothing but the accessibility bus.
  std::string makeServiceDirectory() const {
    const std::filesystem::path directory = home() / "services";
    std::filesystem::create_directory(directory);
    std::filesystem::copy("/usr/share/dbus-1/services/org.a11y.Bus.service", directory);
    return directory.string();
  }

  static GObjectPtr<GDBusConnection> connect(const std::string& address) {
    GErrorSlot error;
    GObjectPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, error.out()));
    EXPECT_TRUE(connection) << error.message();
    return connection;
  }

  GDBusConnection* connection() { return connection_.get(); }

 private:
  TestBusPtr bus_;
  GObjectPtr<GDBusConnection> connection_;
};

/// Alerts on a desktop whose settings portal is in this process: its answers come out of the main
/// loop that the alert runs.
class AlertStyle : public AlertOnABus {
 protected:
  void startPortal(guint32 colorScheme) {
    colorScheme_ = colorScheme;
    static const GDBusInterfaceVTable kMethods{&AlertStyle::read, nullptr, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kPortalInterface, nullptr);
    g_dbus_connection_register_object(connection(), kPortalPath, node->interfaces[0], &kMethods,
                                      this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    const GVariantPtr reply(g_dbus_connection_call_sync(
        connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", kPortal, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr));
    ASSERT_TRUE(reply);
  }

  void changeTo(guint32 colorScheme) {
    g_dbus_connection_emit_signal(connection(), nullptr, kPortalPath, kPortalSettings,
                                  "SettingChanged",
                                  g_variant_new("(ssv)", "org.freedesktop.appearance",
                                                "color-scheme", g_variant_new_uint32(colorScheme)),
                                  nullptr);
  }

  bool isLight() { return display().picture().count(isLightBackground) > kPixelsOfABackground; }

  /// Shows an alert and returns whether it is light.
  bool showsLight() {
    bool light = false;
    whenAlertHasFocus([this, &light] {
      light = isLight();
      display().pressKey("Return");
    });
    EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
    return light;
  }

  /// A portal that hangs keeps the questions.
  bool hangs_ = false;
  std::vector<GObjectPtr<GDBusMethodInvocation>> unanswered_;

 private:
  static void read(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                   GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
    const gchar* settings = nullptr;
    const gchar* key = nullptr;
    g_variant_get(parameters, "(&s&s)", &settings, &key);
    EXPECT_STREQ(settings, "org.freedesktop.appearance");
    EXPECT_STREQ(key, "color-scheme");
    if (static_cast<AlertStyle*>(self)->hangs_) {
      static_cast<AlertStyle*>(self)->unanswered_.emplace_back(invocation);
      return;
    }
    GVariant* value = g_variant_new_uint32(static_cast<AlertStyle*>(self)->colorScheme_);
    g_dbus_method_invocation_return_value(invocation,
                                          g_variant_new("(v)", g_variant_new_variant(value)));
  }

  guint32 colorScheme_ = kNoPreference;
};

TEST_F(AlertStyle, IsLightWithoutAPortal) {
  EXPECT_TRUE(showsLight());
}

TEST_F(AlertStyle, IsLightOnADesktopWithoutAPreference) {
  startPortal(kNoPreference);
  EXPECT_TRUE(showsLight());
}

TEST_F(AlertStyle, PortalThatHangsKeepsNoAlertFromTheUser) {
  hangs_ = true;
  startPortal(kDark);
  EXPECT_TRUE(showsLight());
  EXPECT_FALSE(unanswered_.empty()) << "the portal was not asked";
  unanswered_.clear();
}

TEST_F(AlertStyle, IsDarkOnADarkDesktop) {
  startPortal(kDark);
  EXPECT_FALSE(showsLight());
}

TEST_F(AlertStyle, FollowsTheDesktopWhileTheAlertIsUp) {
  startPortal(kLight);
  whenAlertHasFocus([this] {
    EXPECT_TRUE(isLight());
    changeTo(kDark);
    pollInMainLoop([this] {
      if (isLight()) {
        return false;
      }
      display().pressKey("Return");
      return true;
    });
  });
  EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
}

/// Roles as atspi-constants.h numbers them.
enum class Role : guint32 { alert = 2, label = 29, pushButton = 43 };

/// One object of the accessibility tree.
struct AccessibleObject {
  std::string busName;
  std::string path;
};

/// Alerts with a screen reader's view of them.
class AccessibleAlert : public AlertOnABus {
 protected:
  void SetUp() override {
    AlertOnABus::SetUp();
    setEnvironment("GTK_A11Y", std::nullopt);
    const GVariantPtr address(g_dbus_connection_call_sync(
        connection(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
        G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    ASSERT_TRUE(address) << "there is no accessibility bus";
    const gchar* text = nullptr;
    g_variant_get(address.get(), "(&s)", &text);
    accessibilityBus_ = connect(text);
  }

  void TearDown() override {
    accessibilityBus_.reset();
    AlertOnABus::TearDown();
  }

  Role role(const AccessibleObject& object) {
    const GVariantPtr reply = call(object, "org.a11y.atspi.Accessible", "GetRole", nullptr);
    guint32 role = 0;
    if (reply) {
      g_variant_get(reply.get(), "(u)", &role);
    }
    return static_cast<Role>(role);
  }

  std::string property(const AccessibleObject& object, const char* name) {
    const GVariantPtr reply = call(object, "org.freedesktop.DBus.Properties", "Get",
                                   g_variant_new("(ss)", "org.a11y.atspi.Accessible", name));
    if (!reply) {
      return "";
    }
    const GVariantPtr boxed(g_variant_get_child_value(reply.get(), 0));
    return textOf(g_variant_get_variant(boxed.get()));
  }

  /// What a screen reader finds of a shown alert.
  struct Seen {
    std::string name;
    std::string description;
    std::string firstLabel;
    std::string button;
  };

  Seen show(HelperAlert& shown) {
    Seen seen;
    pollInMainLoop([this, &seen] {
      const std::optional<AccessibleObject> alert = find(desktop(), Role::alert);
      const auto label = alert ? find(*alert, Role::label) : std::nullopt;
      const auto button = alert ? find(*alert, Role::pushButton) : std::nullopt;
      if (!label || !button || display().activeWindowTitle() != "Vendril") {
        return false;
      }
      seen = {property(*alert, "Name"), property(*alert, "Description"), property(*label, "Name"),
              property(*button, "Name")};
      display().pressKey("Return");
      return true;
    });
    EXPECT_EQ(shown.runModal(), 1000);
    return seen;
  }

 private:
  /// The first object below `object` that has the wanted role.
  std::optional<AccessibleObject> find(const AccessibleObject& object, Role wanted) {
    for (const AccessibleObject& child : children(object)) {
      if (role(child) == wanted) {
        return child;
      }
      if (std::optional<AccessibleObject> found = find(child, wanted)) {
        return found;
      }
    }
    return std::nullopt;
  }

  /// The registry's desktop, above all applications.
  static AccessibleObject desktop() {
    return {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
  }

  static std::string textOf(GVariant* value) {
    const GVariantPtr owner(value);
    return g_variant_get_string(owner.get(), nullptr);
  }

  GVariantPtr call(const AccessibleObject& object, const char* interface, const char* method,
                   GVariant* arguments) {
    return GVariantPtr(g_dbus_connection_call_sync(
        accessibilityBus_.get(), object.busName.c_str(), object.path.c_str(), interface, method,
        arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr));
  }

  std::vector<AccessibleObject> children(const AccessibleObject& object) {
    std::vector<AccessibleObject> found;
    const GVariantPtr reply = call(object, "org.a11y.atspi.Accessible", "GetChildren", nullptr);
    if (!reply) {
      return found;
    }
    const GVariantPtr list(g_variant_get_child_value(reply.get(), 0));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, list.get());
    const gchar* busName = nullptr;
    const gchar* path = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&o)", &busName, &path) != 0) {
      found.push_back({busName, path});
    }
    return found;
  }

  GObjectPtr<GDBusConnection> accessibilityBus_;
};

TEST_F(AccessibleAlert, IsAnAlertWithItsTextsAndAButton) {
  const Seen seen = show(*makeEnglishAlert());
  EXPECT_EQ(seen.name, "Network connection error");
  EXPECT_EQ(seen.description,
            "There was an error when Vendril was sending data to Mervale Meeting Service");
  EXPECT_EQ(seen.firstLabel, "Network connection error");
  EXPECT_EQ(seen.button, "OK");
}

TEST_F(AccessibleAlert, TextsAreNeitherMarkupNorMnemonicsNorOptions) {
  const std::unique_ptr<HelperAlert> alert = makeEnglishAlert();
  alert->setMessageText("--help <b>&amp;</b>");
  alert->setInformativeText("not UTF-8: \xff");
  alert->addButtonWithTitle("_OK <i>");
  const Seen seen = show(*alert);
  EXPECT_EQ(seen.name, "--help <b>&amp;</b>");
  EXPECT_EQ(seen.description, "not UTF-8: \uFFFD");
  EXPECT_EQ(seen.firstLabel, "--help <b>&amp;</b>");
  EXPECT_EQ(seen.button, "_OK <i>");
}

}  // namespace
}  // namespace vendril
