#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <vector>

#include "platform/freedesktop/AutostartLoginItems.h"
#include "support/ChildProcess.h"
#include "support/DesktopFiles.h"
#include "support/FakeBundle.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

constexpr const char* kOwnName = "com.brelto.vendril.desktop";
constexpr const char* kSecondName = "com.brelto.vendril-2.desktop";

const PropertyList::Dictionary kHidden{{SessionLoginItems::kHideOnLaunch, true}};

class AutostartLoginItemsOfTheDesktop : public testing::Test {
 protected:
  using Path = std::filesystem::path;

  AutostartLoginItemsOfTheDesktop() { bundle_.path = files_.program("bin/vendril"); }

  AutostartLoginItems items() const { return AutostartLoginItems(bundle_); }
  Url bundleUrl() const { return Url::fileUrlWithPath(bundle_.path); }

  /// The names in the list, in its order.
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& item : items().copySnapshot()) {
      names.push_back(item->displayName().value_or("(none)"));
    }
    return names;
  }

  /// The only item of the list.
  SessionLoginItems::Item onlyItem() const {
    const auto snapshot = items().copySnapshot();
    EXPECT_EQ(snapshot.size(), 1U);
    return snapshot.empty() ? nullptr : snapshot.front();
  }

  /// The target of the only item of the list.
  std::optional<std::string> onlyTarget() const {
    const auto item = onlyItem();
    const auto url = item ? item->resolvedUrl().url : std::nullopt;
    return url ? std::optional(url->absoluteString()) : std::nullopt;
  }

  /// Whether some item means this very program.
  bool launchesOnLogin() const {
    const auto snapshot = items().copySnapshot();
    return std::any_of(snapshot.begin(), snapshot.end(),
                       [this](const auto& item) { return item->resolvedUrl().url == bundleUrl(); });
  }

  SessionLoginItems::Item insertOurs() const {
    return items().insertItemAtEnd(bundleUrl(), kHidden);
  }

  Path users(const std::string& name) const { return home_.config() / "autostart" / name; }

  static void setModified(const Path& path, int secondsAgo) {
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(path, now - std::chrono::seconds(secondsAgo));
  }

  PrivateHome home_;
  DesktopFiles files_{home_};
  FakeBundle bundle_;
};

TEST_F(AutostartLoginItemsOfTheDesktop, ListIsEmptyWithoutDirectories) {
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(AutostartLoginItemsOfTheDesktop, ListHoldsApplicationsThatAreNotHidden) {
  files_.autostart("a.desktop", desktopEntryText("Shown", "/bin/true"));
  files_.autostart("b.desktop", desktopEntryText("Hidden", "/bin/true", "Hidden=true\n"));
  files_.autostart("c.desktop", "[Desktop Entry]\nType=Link\nName=Link\nURL=http://x/\n");
  files_.autostart("d.txt", desktopEntryText("Text", "/bin/true"));
  EXPECT_THAT(names(), ElementsAre("Shown"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, EntryThatGnomeDisabledIsStillInTheList) {
  files_.autostart("a.desktop",
                   desktopEntryText("Off", "/bin/true", "X-GNOME-Autostart-enabled=false\n"));
  EXPECT_THAT(names(), ElementsAre("Off"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, SystemsComeByNameThenTheUsersByTimeThenName) {
  files_.systemAutostart("z.desktop", desktopEntryText("SystemZ", "/bin/true"));
  files_.systemAutostart("y.desktop", desktopEntryText("SystemY", "/bin/true"));
  const auto tied = std::filesystem::file_time_type::clock::now() - std::chrono::seconds(50);
  for (const std::string name : {"c", "b"}) {
    std::filesystem::last_write_time(
        files_.autostart(name + ".desktop", desktopEntryText("Tied" + name, "/bin/true")), tied);
  }
  setModified(files_.autostart("a.desktop", desktopEntryText("Newest", "/bin/true")), 10);
  setModified(files_.autostart("d.desktop", desktopEntryText("Oldest", "/bin/true")), 100);
  EXPECT_THAT(names(), ElementsAre("SystemY", "SystemZ", "Oldest", "Tiedb", "Tiedc", "Newest"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, PreferredSystemDirectoryWins) {
  const ScopedVariable directories(
      "XDG_CONFIG_DIRS", (home_.root() / "first").string() + ":" + home_.systemConfig().string());
  writeFile(home_.root() / "first/autostart/a.desktop", desktopEntryText("First", "/bin/true"));
  files_.systemAutostart("a.desktop", desktopEntryText("Second", "/bin/true"));
  EXPECT_THAT(names(), ElementsAre("First"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, UsersFileOverridesTheSystemsOfTheSameName) {
  for (const std::string name : {"a", "b", "c", "d", "e", "f"}) {
    files_.systemAutostart(name + ".desktop", desktopEntryText("System " + name, "/bin/true"));
  }
  files_.autostart("a.desktop", desktopEntryText("User a", "/bin/true"));
  files_.autostart("b.desktop", desktopEntryText("User b", "/bin/true", "Hidden=true\n"));
  files_.autostart("c.desktop", "rubbish");
  files_.autostart("d.desktop", "");
  std::filesystem::create_symlink("/dev/null", users("e.desktop"));
  std::filesystem::create_symlink("/nonexistent", users("f.desktop"));
  EXPECT_THAT(names(), ElementsAre("User a"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, DisplayNameIsInTheUsersLanguage) {
  const ScopedVariable language("LANGUAGE", "de");
  files_.autostart("a.desktop",
                   desktopEntryText("Name", "/bin/true", "Name[de]=Gr\xC3\xBC\xC3\x9F\x65\n"));
  EXPECT_THAT(names(), ElementsAre("Gr\xC3\xBC\xC3\x9F\x65"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, NameInAnotherEncodingIsShownAsFarAsItGoes) {
  files_.autostart("a.desktop", desktopEntryText("Brelto Mervale B\xFCro", "/bin/true"));
  EXPECT_THAT(names(), ElementsAre("Brelto Mervale B\xEF\xBF\xBDro"));
}

TEST_F(AutostartLoginItemsOfTheDesktop, EntryWithoutNameHasNone) {
  files_.autostart("a.desktop", "[Desktop Entry]\nType=Application\nExec=/bin/true\n");
  EXPECT_EQ(onlyItem()->displayName(), std::nullopt);
}

TEST_F(AutostartLoginItemsOfTheDesktop, TargetIsTheProgramAsAFileUrl) {
  const std::string program = files_.program("My Apps/run");
  files_.autostart("a.desktop", desktopEntryText("A", "\"" + program + "\" --flag %u"));
  EXPECT_EQ(onlyTarget(), Url::fileUrlWithPath(program).absoluteString());
}

TEST_F(AutostartLoginItemsOfTheDesktop, TargetIsFoundOnPath) {
  files_.program("bin/run");
  const ScopedVariable path("PATH", (home_.root() / "bin").string());
  files_.autostart("a.desktop", desktopEntryText("A", "run --flag", "TryExec=run\n"));
  EXPECT_EQ(onlyTarget(), "file://" + (home_.root() / "bin/run").string());
}

struct Unresolvable {
  std::string name;
  std::string text;
  std::string error;
};

void PrintTo(const Unresolvable& entry, std::ostream* out) {
  *out << entry.name;
}

class UnresolvableItem : public AutostartLoginItemsOfTheDesktop,
                         public testing::WithParamInterface<Unresolvable> {};

TEST_P(UnresolvableItem, HasNoTargetButAnError) {
  const Path path = files_.autostart("a.desktop", GetParam().text);
  const ResolvedUrl resolved = onlyItem()->resolvedUrl();
  EXPECT_EQ(resolved.url, std::nullopt);
  EXPECT_THAT(resolved.error, Optional(HasSubstr(GetParam().error)));
  EXPECT_THAT(resolved.error, Optional(HasSubstr("a.desktop")));
  EXPECT_EQ(readFile(path), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, UnresolvableItem,
    testing::Values(
        Unresolvable{"ProgramGone", desktopEntryText("A", "/nonexistent/run"), "/nonexistent/run"},
        Unresolvable{"NotOnPath", desktopEntryText("A", "no-such-program"), "no-such-program"},
        Unresolvable{"TryExecGone", desktopEntryText("A", "/bin/true", "TryExec=/nonexistent\n"),
                     "TryExec"},
        Unresolvable{"DirectoryAsProgram", desktopEntryText("A", "/tmp"), "/tmp"},
        Unresolvable{"RelativePath", desktopEntryText("A", "./run"), "./run"},
        Unresolvable{"UnbalancedQuotes", desktopEntryText("A", "\"/bin/true"), "does not parse"},
        Unresolvable{"EmptyExec", desktopEntryText("A", ""), "does not parse"},
        Unresolvable{"NoExec", "[Desktop Entry]\nType=Application\nName=A\n", "no readable Exec"},
        Unresolvable{"OtherEncoding", desktopEntryText("A", "/opt/B\xFCro/run"),
                     "no readable Exec"}),
    [](const auto& situation) { return situation.param.name; });

TEST_F(AutostartLoginItemsOfTheDesktop, FilesThatAreNoEntriesAreSkippedAndStayAsTheyAre) {
  const Path bad = files_.autostart("a.desktop", "[Desktop Entry\nrubbish");
  files_.autostart("b.desktop", "[Other]\nType=Application\n[Desktop Entry]\nType=Application\n");
  std::filesystem::create_directories(users("directory.desktop"));
  std::filesystem::create_symlink("/nonexistent", users("dangling.desktop"));
  std::filesystem::create_symlink("loop.desktop", users("loop.desktop"));
  ASSERT_EQ(mkfifo(users("fifo.desktop").c_str(), S_IRWXU), 0);
  files_.autostart("huge.desktop",
                   desktopEntryText("Huge", "/bin/true", "#" + std::string(2U << 20U, 'x')));
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_NE(insertOurs(), nullptr);
  EXPECT_THAT(names(), ElementsAre("Vendril"));
  EXPECT_EQ(readFile(bad), "[Desktop Entry\nrubbish");
}

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
  EXPECT_EQ(readFile(users(kOwnName)),
            desktopEntryText("My Vendril", bundle_.path, rest + "X-LoginItem-HideOnLaunch=true\n"));
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
