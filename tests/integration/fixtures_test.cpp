#include <gio/gio.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>

#include "platform/freedesktop/GlibPtr.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateHome.h"

namespace vendril {
namespace {

TEST(ChildProcess, GivesOutputErrorAndStatus) {
  ChildProcess child({"sh", "-c", "echo $WORD; echo bad >&2; exit 3"}, {{"WORD", "good"}});
  EXPECT_EQ(child.waitForExit(), 3);
  EXPECT_EQ(child.out(), "good\n");
  EXPECT_EQ(child.err(), "bad\n");
}

TEST(ChildProcess, WaitForOutFailsWhenTheStreamEndsWithoutTheText) {
  ChildProcess child({"echo", "something"});
  EXPECT_FALSE(child.waitForOut("else"));
}

TEST(ChildProcess, WaitForExitGivesUpAtItsDeadline) {
  ChildProcess child({"cat", "/dev/zero"}, {});
  child.signal(SIGSTOP);
  EXPECT_EQ(child.waitForExit(std::chrono::milliseconds(50)), std::nullopt);
}

TEST(ChildProcess, TellsTheSignalThatEndedTheChild) {
  ChildProcess child({"sleep", "100"});
  child.signal(SIGTERM);
  EXPECT_EQ(child.waitForExit(), 128 + SIGTERM);
}

TEST(PrivateHome, IsGoneAfterwardsAndGivesTheOldEnvironmentBack) {
  const std::string before = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
  std::filesystem::path root;
  {
    const PrivateHome home;
    root = home.root();
    EXPECT_EQ(std::getenv("HOME"), home.home().string());
    EXPECT_TRUE(std::filesystem::is_directory(home.config()));
    EXPECT_EQ(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr);
  }
  EXPECT_FALSE(std::filesystem::exists(root));
  EXPECT_EQ(std::getenv("HOME") != nullptr ? std::getenv("HOME") : "", before);
}

TEST(PrivateBus, StartsTheServicesThatAreAddedToIt) {
  const PrivateHome home;
  const PrivateBus bus(home);
  bus.addService("com.example.Absent", "/bin/false");
  const GObjectPtr<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  ASSERT_NE(connection, nullptr);
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  GErrorSlot error;
  const GVariantPtr reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "StartServiceByName", g_variant_new("(su)", "com.example.Absent", 0U), nullptr,
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.out()));
  EXPECT_TRUE(error.matches(G_DBUS_ERROR, G_DBUS_ERROR_SPAWN_CHILD_EXITED)) << error.message();
}

}  // namespace
}  // namespace vendril
