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

}  // namespace
}  // namespace vendril
