#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/RoomRules.h"

namespace vendril {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

using Check = std::vector<std::string> (*)(const SourceFile&);

std::vector<std::string> violationsOf(const std::vector<SourceFile>& files, Check check) {
  std::vector<std::string> all;
  for (const SourceFile& file : files) {
    const std::vector<std::string> violations = check(file);
    all.insert(all.end(), violations.begin(), violations.end());
  }
  return all;
}

std::vector<std::string> includesOf(const std::string& path, std::vector<std::string> lines) {
  return includeViolations({path, std::move(lines)});
}

TEST(RoomRules, TreeIncludesDownwardsOnly) {
  EXPECT_THAT(violationsOf(roomFiles(VENDRIL_SOURCE_DIR), includeViolations), IsEmpty());
}

TEST(RoomRules, TreeHasNoOverlongFile) {
  EXPECT_THAT(violationsOf(roomFiles(VENDRIL_SOURCE_DIR), lengthViolations), IsEmpty());
}

TEST(RoomRules, TreeLeavesNoWorkUndone) {
  EXPECT_THAT(violationsOf(handWrittenFiles(VENDRIL_SOURCE_DIR), leftoverViolations), IsEmpty());
}

TEST(RoomRules, EveryRoomOfTheTreeIsRead) {
  const std::vector<SourceFile> files = roomFiles(VENDRIL_SOURCE_DIR);
  for (const char* path :
       {"app/main.cpp", "protocol/ZQN5ProtocolHandler.h", "launcher/ZQN5Launcher.h",
        "logging/ZQN5SimpleLogger.cpp", "config/ConfigurationFile.cpp", "platform/Host.h",
        "platform/freedesktop/GlibPtr.h", "tests/unit/room_rules_test.cpp"}) {
    EXPECT_THAT(files, Contains(Field(&SourceFile::path, path)));
  }
  EXPECT_THAT(handWrittenFiles(VENDRIL_SOURCE_DIR),
              Contains(Field(&SourceFile::path, "cmake/Identity.cmake")));
}

TEST(RoomRules, EveryLineOfAFileIsRead) {
  const std::vector<SourceFile> files = roomFiles(VENDRIL_SOURCE_DIR);
  const auto file = std::find_if(files.begin(), files.end(), [](const SourceFile& candidate) {
    return candidate.path == "platform/Host.h";
  });
  ASSERT_NE(file, files.end());
  EXPECT_EQ(file->lines.front(), "#pragma once");
  EXPECT_EQ(file->lines.back(), "}  // namespace vendril");
}

TEST(RoomRules, AllowedIncludesPass) {
  EXPECT_THAT(includesOf("app/StartUp.cpp",
                         {"#include \"app/ZQN5VendrilAppDelegate.h\"",
                          "#include \"protocol/ZQN5ProtocolHandler.h\"",
                          "#include \"platform/Host.h\"", "#include <glib.h>", "#include <set>"}),
              IsEmpty());
  EXPECT_THAT(includesOf("app/main.cpp", {"#include \"platform/freedesktop/FreedesktopHost.h\""}),
              IsEmpty());
  EXPECT_THAT(
      includesOf("tools/vendrilctl.cpp", {"#include \"platform/freedesktop/FreedesktopHost.h\"",
                                          "#include \"app/LinkParameters.h\"",
                                          "#include \"config/ZQN5PublishedConfiguration.h\""}),
      IsEmpty());
  EXPECT_THAT(includesOf("platform/freedesktop/GlibPtr.h",
                         {"#include <gio/gio.h>", "#include \"platform/Url.h\"",
                          "#include \"platform/freedesktop/GErrorSlot.h\""}),
              IsEmpty());
  EXPECT_THAT(includesOf("alert/Dialog.h", {"#include <gtk/gtk.h>"}), IsEmpty());
  EXPECT_THAT(includesOf("tests/support/PrivateBus.h",
                         {"#include <gio/gio.h>", "#include \"app/ZQN5VendrilAppDelegate.h\""}),
              IsEmpty());
}

TEST(RoomRules, IncludeOfANeighbouringRoomIsCaughtWithFileAndLine) {
  EXPECT_THAT(includesOf("protocol/UrlEventIntake.cpp",
                         {"#include <set>", "", "#include \"logging/ZQN5SimpleLogger.h\""}),
              ElementsAre("protocol/UrlEventIntake.cpp:3: protocol/ may not include "
                          "logging/ZQN5SimpleLogger.h"));
}

TEST(RoomRules, IncludeUpwardsIsCaughtInEachRoom) {
  const std::string line = "#include \"app/ZQN5VendrilAppDelegate.h\"";
  for (const char* room : {"protocol", "logging", "config", "launcher", "platform",
                           "platform/freedesktop", "alert", "portal"}) {
    EXPECT_THAT(includesOf(std::string(room) + "/File.cpp", {line}), SizeIs(1)) << room;
  }
  for (const char* room : {"platform", "platform/freedesktop", "alert", "portal"}) {
    EXPECT_THAT(
        includesOf(std::string(room) + "/File.h", {"#include \"protocol/ZQN5ProtocolHandler.h\""}),
        SizeIs(1))
        << room;
  }
}

TEST(RoomRules, NeighboursMayNotIncludeOneAnother) {
  const std::vector<std::string> rooms{"protocol", "logging", "config", "launcher"};
  for (const std::string& from : rooms) {
    for (const std::string& to : rooms) {
      EXPECT_THAT(includesOf(from + "/File.cpp", {"#include \"" + to + "/File.h\""}),
                  SizeIs(from == to ? 0 : 1))
          << from << " includes " << to;
    }
  }
}

TEST(RoomRules, RealDesktopIsCaughtOutsideTheEntryPointAndTheTools) {
  const std::string line = "#include \"platform/freedesktop/FreedesktopHost.h\"";
  for (const char* path : {"app/StartUp.cpp", "app/main.h", "config/ConfigurationFile.cpp",
                           "platform/Host.cpp", "alert/main.cpp", "portal/main.cpp"}) {
    EXPECT_THAT(includesOf(path, {line}), SizeIs(1)) << path;
  }
}

TEST(RoomRules, HelpersWithoutRoomsMayNotIncludeThePlatform) {
  for (const char* path : {"alert/main.cpp", "portal/main.cpp"}) {
    EXPECT_THAT(includesOf(path, {"#include \"platform/Url.h\""}), SizeIs(1)) << path;
  }
}

TEST(RoomRules, IncludeIsCaughtInEverySpelling) {
  for (const char* line : {"#include <app/Delegate.h>", "  #  include\t\"app/Delegate.h\"  // why",
                           "#include\"app/Delegate.h\"", "#include \"../app/Delegate.h\"",
                           "#include \"ZQN5ProtocolHandler.h\""}) {
    EXPECT_THAT(includesOf("protocol/File.cpp", {line}), SizeIs(1)) << line;
  }
  EXPECT_THAT(includesOf("protocol/File.cpp", {"// #include \"app/Delegate.h\"", "include app/"}),
              IsEmpty());
}

TEST(RoomRules, LibraryHeaderIsCaughtInAHeaderAlone) {
  for (const char* library :
       {"glib.h", "glib-object.h", "glib-unix.h", "glib/gi18n.h", "gio/gio.h",
        "gio/gdesktopappinfo.h", "gtk/gtk.h", "curl/curl.h", "plist/plist.h", "jansson.h"}) {
    const std::string line = std::string("#include <") + library + ">";
    for (const char* room :
         {"app", "protocol", "logging", "config", "launcher", "platform", "tools", "portal"}) {
      EXPECT_THAT(includesOf(std::string(room) + "/File.h", {line}), SizeIs(1)) << room << line;
      EXPECT_THAT(includesOf(std::string(room) + "/File.cpp", {line}), IsEmpty()) << room << line;
    }
    EXPECT_THAT(includesOf("platform/freedesktop/File.h", {line}), IsEmpty()) << line;
  }
}

TEST(RoomRules, FileOutsideEveryRoomIsCaught) {
  EXPECT_THAT(includesOf("attic/File.cpp", {}), ElementsAre("attic/File.cpp:1: lies in no room"));
  EXPECT_THAT(includesOf("File.cpp", {}), SizeIs(1));
}

TEST(RoomRules, OverlongFileIsCaughtAtTheFirstLineTooMany) {
  EXPECT_THAT(lengthViolations({"app/File.h", std::vector<std::string>(160)}), IsEmpty());
  EXPECT_THAT(lengthViolations({"app/File.h", std::vector<std::string>(161)}),
              ElementsAre("app/File.h:161: goes on after 160 lines"));
  EXPECT_THAT(lengthViolations({"app/File.cpp", std::vector<std::string>(450)}), IsEmpty());
  EXPECT_THAT(lengthViolations({"app/File.cpp", std::vector<std::string>(451)}),
              ElementsAre("app/File.cpp:451: goes on after 450 lines"));
}

TEST(RoomRules, LeftoverIsCaughtAsAWordOfItsOwn) {
  const std::string word = std::string("TO") + "DO";
  EXPECT_THAT(leftoverViolations({"app/File.cpp", {"", "// " + word + ": more"}}),
              ElementsAre("app/File.cpp:2: leaves work undone"));
  EXPECT_THAT(leftoverViolations({"app/File.cpp", {"mas" + word + "nte", "todo"}}), IsEmpty());
}

}  // namespace
}  // namespace vendril
