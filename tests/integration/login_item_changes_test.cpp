#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <vector>

#include "support/ChildProcess.h"
#include "support/LoginItemsFixture.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

TEST_F(AutostartLoginItemsOfTheDesktop, InsertedEntryIsValidAndLeadsToTheBundle) {
  const auto inserted = insertOurs();
  ASSERT_NE(inserted, nullptr);
  EXPECT_EQ(inserted->resolvedUrl().url, bundleUrl());
  EXPECT_TRUE(launchesOnLogin());
  EXPECT_EQ(readFile(users(kOwnName)),
            "[Desktop Entry]\nType=Application\nName=Vendril\nIcon=com.brelto.vendril\n"
            "Terminal=false\nStartupNotify=false\nExec=" +
                bundle_.path + "\nX-LoginItem-HideOnLaunch=true\n");
}

TEST_F(AutostartLoginItemsOfTheDesktop, HideOnLaunchIsKeptAsItWasGiven) {
  ASSERT_NE(items().insertItemAtEnd(bundleUrl(), {}), nullptr);
  EXPECT_THAT(readFile(users(kOwnName)), Not(HasSubstr("HideOnLaunch")));
  std::filesystem::remove(users(kOwnName));
  ASSERT_NE(items().insertItemAtEnd(bundleUrl(), {{SessionLoginItems::kHideOnLaunch, false}}),
            nullptr);
  EXPECT_THAT(readFile(users(kOwnName)), HasSubstr("X-LoginItem-HideOnLaunch=false\n"));
}

class InsertedEntry : public AutostartLoginItemsOfTheDesktop,
                      public testing::WithParamInterface<std::string> {
 protected:
  InsertedEntry() {
    bundle_.path = files_.program(GetParam(), "touch \"" + mark().string() + "\"\n");
  }
  Path mark() const { return home_.root() / "mark"; }
  bool waitForMark() const {
    return runMainLoopUntil([this] { return std::filesystem::exists(mark()); });
  }
};

TEST_P(InsertedEntry, IsValidAndLeadsToItsProgramWhateverItsPath) {
  const auto inserted = insertOurs();
  ASSERT_NE(inserted, nullptr);
  EXPECT_EQ(onlyTarget(), bundleUrl().absoluteString());
  ChildProcess validator({"desktop-file-validate", users(kOwnName).string()});
  EXPECT_EQ(validator.waitForExit(), 0) << validator.out() << validator.err();
}

INSTANTIATE_TEST_SUITE_P(Paths, InsertedEntry,
                         testing::Values("bin/vendril", "My Apps/it's/vendril", "100%/%u/vendril",
                                         "q\"b\\s$d`t/vendril", "\xC3\xA4\xE2\x82\xAC/(v);&#~/v"));

/// With paths that GIO can start: it looks for the program before it resolves doubled percent
/// signs.
using InsertedEntryAndGio = InsertedEntry;

TEST_P(InsertedEntryAndGio, IsStarted) {
  ASSERT_NE(insertOurs(), nullptr);
  ChildProcess gio({"gio", "launch", users(kOwnName).string()});
  EXPECT_EQ(gio.waitForExit(), 0) << gio.err();
  EXPECT_TRUE(waitForMark()) << gio.out() << gio.err() << readFile(users(kOwnName));
}

INSTANTIATE_TEST_SUITE_P(Paths, InsertedEntryAndGio,
                         testing::Values("bin/vendril", "My Apps/it's/vendril",
                                         "q\"b\\s$d`t/vendril", "\xC3\xA4\xE2\x82\xAC/(v);&#~/v"));

/// With paths that this launcher can start: it resolves neither doubled percent signs nor escapes
/// in quotes.
using InsertedEntryAndDex = InsertedEntry;

TEST_P(InsertedEntryAndDex, IsStartedFromTheAutostartDirectory) {
  ASSERT_NE(insertOurs(), nullptr);
  ChildProcess dex({"dex", "-a", "-s", users("").string()});
  EXPECT_EQ(dex.waitForExit(), 0) << dex.err();
  EXPECT_TRUE(waitForMark()) << dex.out() << dex.err() << readFile(users(kOwnName));
}

INSTANTIATE_TEST_SUITE_P(Paths, InsertedEntryAndDex,
                         testing::Values("bin/vendril", "My Apps/it's/vendril",
                                         "\xC3\xA4\xE2\x82\xAC/(v);&#~/v"));

TEST_F(AutostartLoginItemsOfTheDesktop, NewItemIsTheLastEvenAfterFilesOfTheFuture) {
  setModified(files_.autostart("z.desktop", desktopEntryText("Future", "/bin/true")), -1000);
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_THAT(names(), ElementsAre("Future", "Vendril"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, TakenNameIsLeftAloneAndTheNextOneUsed) {
  const std::string other = files_.program("other/vendril");
  const std::string text = desktopEntryText("Vendril", other);
  files_.autostart(kOwnName, text);
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_EQ(readFile(users(kOwnName)), text);
  EXPECT_TRUE(std::filesystem::exists(users(kSecondName)));
  EXPECT_TRUE(launchesOnLogin());
  EXPECT_EQ(items().copySnapshot().back()->resolvedUrl().url, bundleUrl());
}

TEST_F(AutostartLoginItemsOfTheDesktop, NameThatIsTakenByNoEntryIsLeftAlone) {
  files_.autostart(kOwnName, "rubbish");
  std::filesystem::create_directories(users(kSecondName));
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_EQ(readFile(users(kOwnName)), "rubbish");
  EXPECT_TRUE(std::filesystem::exists(users("com.brelto.vendril-3.desktop")));
}

TEST_F(AutostartLoginItemsOfTheDesktop, EntryWhoseProgramHasMovedIsHealedAndKeepsTheRest) {
  const std::string rest = "Name[de]=Meins\n# mine\nX-GNOME-Autostart-Delay=5\n";
  files_.autostart(kOwnName, desktopEntryText("My Vendril", "/old/vendril --x",
                                              rest + "TryExec=/old/vendril\n"));
  ASSERT_FALSE(launchesOnLogin());
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_TRUE(launchesOnLogin());
  EXPECT_EQ(readFile(users(kOwnName)), desktopEntryText("My Vendril", bundle_.path,
                                                        rest + "TryExec=" + bundle_.path +
                                                            "\nX-LoginItem-HideOnLaunch=true\n"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, EntryWithAKeyThatComesTwiceIsHealedOnce) {
  files_.autostart(kOwnName, desktopEntryText("Vendril", "/old/vendril",
                                              "TryExec=/older/vendril\nTryExec=/old/vendril\n"
                                              "Exec=/old/vendril\n"));
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_TRUE(launchesOnLogin()) << readFile(users(kOwnName));
}

TEST_F(AutostartLoginItemsOfTheDesktop, EntryWithAMalformedTranslationIsNotHealed) {
  for (const std::string line : {"Comment [fr]=Salut\n", "Name[d e]=x\n", "a]b[fr]=x\n"}) {
    const std::string text = "[Desktop Entry]\nType=Application\nName=Vendril\n" + line +
                             "Exec=/old/vendril\nX-Mine=1\nHidden=true\n";
    files_.autostart(kOwnName, text);
    ASSERT_NE(insertOurs(), nullptr) << line;
    EXPECT_EQ(readFile(users(kOwnName)), text);
    EXPECT_TRUE(std::filesystem::remove(users(kSecondName))) << line;
  }
}

TEST_F(AutostartLoginItemsOfTheDesktop, HealedEntryStaysSwitchedOff) {
  files_.autostart(kOwnName, desktopEntryText("Vendril", "/old/vendril", "Hidden=true\n"));
  ASSERT_FALSE(launchesOnLogin());
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_TRUE(launchesOnLogin());
  EXPECT_THAT(readFile(users(kOwnName)), HasSubstr("Hidden=true\n"));
  EXPECT_FALSE(std::filesystem::exists(users(kSecondName)));
}

TEST_F(AutostartLoginItemsOfTheDesktop, SystemsEntryOfOursWhoseProgramIsGoneIsOverridden) {
  const std::string text = desktopEntryText("Vendril", "/old/vendril");
  const Path systems = files_.systemAutostart(kOwnName, text);
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_EQ(readFile(systems), text);
  EXPECT_EQ(onlyTarget(), bundleUrl().absoluteString());
}

class OwnEntrySwitchedOff : public AutostartLoginItemsOfTheDesktop {
 protected:
  /// The application asks this at each start, and inserts itself when the answer is no.
  void expectCountsAsOurs() { EXPECT_TRUE(launchesOnLogin()); }
};

TEST_F(OwnEntrySwitchedOff, ByHiddenCounts) {
  files_.autostart(kOwnName, desktopEntryText("Vendril", bundle_.path, "Hidden=true\n"));
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, ByHiddenUnderItsSecondNameCounts) {
  files_.autostart(kSecondName, desktopEntryText("Vendril", bundle_.path, "Hidden=true\n"));
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, ByGnomesKeyCounts) {
  files_.autostart(kOwnName,
                   desktopEntryText("Vendril", bundle_.path, "X-GNOME-Autostart-enabled=false\n"));
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, ByHiddenAloneCounts) {
  files_.autostart(kOwnName, "[Desktop Entry]\nHidden=true\n");
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, ByAnEmptyFileCounts) {
  files_.autostart(kOwnName, "");
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, ByALinkToNothingCounts) {
  std::filesystem::create_directories(users(""));
  std::filesystem::create_symlink("/dev/null", users(kOwnName));
  expectCountsAsOurs();
}

TEST_F(OwnEntrySwitchedOff, UnderASimilarNameDoesNotCount) {
  for (const std::string name : {"com.brelto.vendril-x.desktop", "com.brelto.vendril-.desktop",
                                 "com.brelto.vendrils.desktop", "com.brelto.desktop"}) {
    files_.autostart(name, desktopEntryText("Vendril", bundle_.path, "Hidden=true\n"));
  }
  EXPECT_FALSE(launchesOnLogin());
}

TEST_F(AutostartLoginItemsOfTheDesktop, RemovingAUsersEntryDeletesItsFile) {
  const Path path = files_.autostart("a.desktop", desktopEntryText("A", "/bin/true"));
  const auto item = onlyItem();
  EXPECT_EQ(items().remove(item), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(items().remove(item), ENOENT);
}

TEST_F(AutostartLoginItemsOfTheDesktop, RemovingALinkedEntryLeavesWhatItLinksTo) {
  const Path target = files_.program("target.desktop");
  writeFile(target, desktopEntryText("A", "/bin/true"));
  std::filesystem::create_directories(users(""));
  std::filesystem::create_symlink(target, users("a.desktop"));
  EXPECT_EQ(items().remove(onlyItem()), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(users("a.desktop")));
  EXPECT_TRUE(std::filesystem::exists(target));
}

TEST_F(AutostartLoginItemsOfTheDesktop, RemovingASystemsEntryHidesItFromTheUser) {
  const std::string text = desktopEntryText("A", "/bin/true");
  const Path systems = files_.systemAutostart("a.desktop", text);
  EXPECT_EQ(items().remove(onlyItem()), 0);
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(readFile(systems), text);
  EXPECT_TRUE(readFile(users("a.desktop")).starts_with(text + "Hidden=true\n"))
      << readFile(users("a.desktop"));
  ChildProcess validator({"desktop-file-validate", users("a.desktop").string()});
  EXPECT_EQ(validator.waitForExit(), 0) << validator.out() << validator.err();
}

TEST_F(AutostartLoginItemsOfTheDesktop, RemovingAnOwnEntryThatTheSystemLinksToNothingHidesIt) {
  std::filesystem::create_directories(home_.systemConfig() / "autostart");
  std::filesystem::create_symlink("/dev/null", home_.systemConfig() / "autostart" / kOwnName);
  ASSERT_TRUE(launchesOnLogin());
  EXPECT_EQ(items().remove(onlyItem()), 0);
  EXPECT_FALSE(launchesOnLogin());
  EXPECT_THAT(readFile(users(kOwnName)), HasSubstr("Hidden=true\n"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, RemovingAnOverrideDoesNotBringTheSystemsEntryBack) {
  files_.systemAutostart("a.desktop", desktopEntryText("System", "/bin/true"));
  files_.autostart("a.desktop", desktopEntryText("User", "/bin/true"));
  EXPECT_EQ(items().remove(onlyItem()), 0);
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(AutostartLoginItemsOfTheDesktop, OwnEntryOfTheSystemCanBeRemovedAndInsertedAgain) {
  files_.systemAutostart(kOwnName, desktopEntryText("Vendril", bundle_.path));
  ASSERT_TRUE(launchesOnLogin());
  EXPECT_EQ(items().remove(onlyItem()), 0);
  EXPECT_FALSE(launchesOnLogin());
  ASSERT_NE(insertOurs(), nullptr);
  EXPECT_TRUE(launchesOnLogin());
  EXPECT_THAT(readFile(users(kOwnName)), Not(HasSubstr("Hidden")));
}

TEST_F(AutostartLoginItemsOfTheDesktop, ItemOfAnotherListIsNotRemoved) {
  class ForeignItem : public LoginItem {
    std::optional<std::string> displayName() const override { return std::nullopt; }
    ResolvedUrl resolvedUrl() const override { return {}; }
  };
  EXPECT_EQ(items().remove(std::make_shared<ForeignItem>()), EINVAL);
  EXPECT_EQ(items().remove(nullptr), EINVAL);
}

TEST_F(AutostartLoginItemsOfTheDesktop, FailedRemovalHasAStatus) {
  files_.systemAutostart("a.desktop", desktopEntryText("A", "/bin/true"));
  writeFile(home_.config() / "autostart", "a file");
  EXPECT_NE(items().remove(onlyItem()), 0);
  EXPECT_EQ(readFile(home_.config() / "autostart"), "a file");
}

TEST_F(AutostartLoginItemsOfTheDesktop, FailedInsertionGivesNoItem) {
  EXPECT_EQ(items().insertItemAtEnd(*Url::parse("http://example.org/"), {}), nullptr);
  EXPECT_EQ(items().insertItemAtEnd(*Url::parse("file:///%FF"), {}), nullptr);
  bundle_.identifier = std::nullopt;
  EXPECT_EQ(insertOurs(), nullptr);
  bundle_.identifier = "com.brelto.Vendril";
  writeFile(home_.config() / "autostart", "a file");
  EXPECT_EQ(insertOurs(), nullptr);
  EXPECT_EQ(readFile(home_.config() / "autostart"), "a file");
}

TEST_F(AutostartLoginItemsOfTheDesktop, DirectoryThatTakesNoFilesGivesNoItem) {
  std::filesystem::create_directory_symlink("/proc/self/fdinfo", home_.config() / "autostart");
  EXPECT_EQ(insertOurs(), nullptr);
  EXPECT_THAT(names(), IsEmpty());
}

}  // namespace
}  // namespace vendril
