#include "platform/freedesktop/XdgPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <optional>

#include "support/ScopedVariable.h"

namespace vendril {
namespace {

using testing::ElementsAre;

/// An environment in which only the home directory is known.
class XdgPathsOfTheEnvironment : public testing::Test {
 protected:
  XdgPathsOfTheEnvironment() {
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
      set(name, std::nullopt);
    }
    set("HOME", "/home/anna");
  }

  void set(const char* name, const std::optional<std::string>& value) {
    variables_.emplace_front(name, value);
  }

 private:
  /// The one that was set last is the first to give the old value back.
  std::list<ScopedVariable> variables_;
};

TEST_F(XdgPathsOfTheEnvironment, AreTheStandardsOnesBelowTheHome) {
  const XdgPaths paths = XdgPaths::fromEnvironment();
  EXPECT_EQ(paths.configHome, "/home/anna/.config");
  EXPECT_EQ(paths.dataHome, "/home/anna/.local/share");
  EXPECT_THAT(paths.configDirs, ElementsAre("/etc/xdg"));
  EXPECT_THAT(paths.dataDirs, ElementsAre("/usr/local/share", "/usr/share"));
}

TEST_F(XdgPathsOfTheEnvironment, HaveNoSlashAtTheirEnd) {
  set("XDG_CONFIG_HOME", "/c//");
  set("XDG_DATA_DIRS", "/d/:/e//");
  const XdgPaths paths = XdgPaths::fromEnvironment();
  EXPECT_EQ(paths.configHome, "/c");
  EXPECT_THAT(paths.dataDirs, ElementsAre("/d", "/e"));
}

TEST_F(XdgPathsOfTheEnvironment, LieBelowAHomeThatIsTheRoot) {
  for (const char* root : {"/", "//"}) {
    set("HOME", root);
    EXPECT_EQ(XdgPaths::fromEnvironment().configHome, "/.config");
    EXPECT_EQ(XdgPaths::fromEnvironment().dataHome, "/.local/share");
  }
}

TEST_F(XdgPathsOfTheEnvironment, CanBeTheRoot) {
  for (const char* name :
       {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
    set(name, "/");
  }
  const XdgPaths paths = XdgPaths::fromEnvironment();
  EXPECT_EQ(paths.configHome, "/");
  EXPECT_EQ(paths.dataHome, "/");
  EXPECT_THAT(paths.configDirs, ElementsAre("/"));
  EXPECT_THAT(paths.dataDirs, ElementsAre("/"));
}

TEST_F(XdgPathsOfTheEnvironment, IgnoreVariablesThatNameNoAbsoluteDirectory) {
  set("XDG_CONFIG_HOME", "relative");
  set("XDG_DATA_HOME", "./relative");
  set("XDG_CONFIG_DIRS", "relative");
  set("XDG_DATA_DIRS", ":relative:also/relative");
  const XdgPaths paths = XdgPaths::fromEnvironment();
  EXPECT_EQ(paths.configHome, "/home/anna/.config");
  EXPECT_EQ(paths.dataHome, "/home/anna/.local/share");
  EXPECT_THAT(paths.configDirs, ElementsAre("/etc/xdg"));
  EXPECT_THAT(paths.dataDirs, ElementsAre("/usr/local/share", "/usr/share"));
}

TEST_F(XdgPathsOfTheEnvironment, LeaveOutOnlyTheRelativeOnesOfSeveralDirectories) {
  set("XDG_CONFIG_DIRS", "relative:/b");
  EXPECT_THAT(XdgPaths::fromEnvironment().configDirs, ElementsAre("/b"));
}

}  // namespace
}  // namespace vendril
