#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <string>

#include "support/LinkToReportFixture.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;

constexpr const char* kEntry = "com.brelto.vendril.desktop";
constexpr const char* kType = "x-scheme-handler/vendril";

/// What the desktop's own commands say and do once the agent has been started.
class DesktopIntegration : public LinkToReportFixture {
 protected:
  static std::string outputOf(const std::vector<std::string>& command) {
    ChildProcess process(command);
    process.waitForExit();
    return process.out();
  }

  /// Another application that handles one of the schemes, so that the agent has to register.
  void installRival() const {
    writeFile(agent.home().data() / "applications/other.desktop",
              "[Desktop Entry]\nType=Application\nName=Other\nExec=true %u\nMimeType=" +
                  std::string(kType) + ";text/html;\n");
    writeFile(list, kForeign + std::string(kType) + "=other.desktop\n");
  }

  void startOnce() const {
    const auto process = agent.startAndWait();
    process->signal(SIGTERM);
    ASSERT_EQ(process->waitForExit(), 0) << process->err();
  }

  void expectReport(const std::vector<std::string>& command) {
    const std::size_t before = portal.requests().size();
    EXPECT_EQ(InstalledAgent::run(command), 0);
    EXPECT_TRUE(portal.waitForRequests(before + 1)) << ::testing::PrintToString(command) << "\n"
                                                    << agent.activatedLog();
  }

  const std::string kForeign =
      "# kept\n[Added Associations]\ntext/html=b.desktop;\n\n[Default Applications]\n"
      "text/html = b.desktop\nx-scheme-handler/http=b.desktop\nx-scheme-handler/https=b.desktop\n";
  const std::filesystem::path list = agent.home().config() / "mimeapps.list";
  /// xdg-open looks for handlers of links only where it takes the session for a graphical one.
  const ScopedVariable display{"DISPLAY", ":none"};
  const std::filesystem::path autostart = agent.home().config() / "autostart" / kEntry;
};

TEST_F(DesktopIntegration, EveryCommandNamesTheAgentAfterAFirstStart) {
  installRival();
  startOnce();
  EXPECT_EQ(outputOf({"xdg-mime", "query", "default", kType}), std::string(kEntry) + "\n");
  EXPECT_THAT(outputOf({"gio", "mime", kType}), HasSubstr(kEntry));
  EXPECT_EQ(outputOf({"xdg-settings", "get", "default-url-scheme-handler", "vendril"}),
            std::string(kEntry) + "\n");
}

TEST_F(DesktopIntegration, EveryLauncherBringsALinkToThePortal) {
  startOnce();
  expectReport({"gio", "open", link("gio")});
  expectReport({"xdg-open", link("xdg")});
  expectReport({"gapplication", "launch", "com.brelto.vendril", link("gapplication")});
  expectReport({InstalledAgent::program(), link("exec")});
}

TEST_F(DesktopIntegration, LauncherWithoutTheBusStartsTheProgramItself) {
  startOnce();
  const ScopedVariable none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  ChildProcess launcher({"xdg-open", link("7")});
  EXPECT_TRUE(portal.waitForRequests(1));
}

TEST_F(DesktopIntegration, RegistrationLeavesEveryForeignAssociationAsItIs) {
  installRival();
  const std::string before = readFile(list);
  startOnce();
  const std::string after = readFile(list);
  EXPECT_NE(after, before);
  EXPECT_THAT(after, HasSubstr("# kept\n"));
  for (const char* line :
       {"text/html=b.desktop;\n", "text/html = b.desktop\n", "x-scheme-handler/http=b.desktop\n",
        "x-scheme-handler/https=b.desktop\n"}) {
    EXPECT_THAT(after, HasSubstr(line));
  }
  startOnce();
  startOnce();
  EXPECT_EQ(readFile(list), after) << "registering again changes nothing";
}

TEST_F(DesktopIntegration, SymbolicLinkAtTheListStaysOne) {
  installRival();
  const auto target = agent.home().root() / "real.list";
  std::filesystem::rename(list, target);
  std::filesystem::create_symlink(target, list);
  startOnce();
  EXPECT_TRUE(std::filesystem::is_symlink(list));
  EXPECT_THAT(readFile(target), HasSubstr(kEntry));
}

TEST_F(DesktopIntegration, MalformedListIsLeftAloneAndTheAgentLogsWhyAndEnds) {
  installRival();
  ASSERT_EQ(InstalledAgent::run({"update-desktop-database", agent.home().data() / "applications"}),
            0);
  const std::string malformed = kForeign + "this is no entry\n";
  writeFile(list, malformed);
  const auto process = agent.start({link("7")});
  EXPECT_EQ(process->waitForExit(), 0);
  EXPECT_THAT(process->err(), HasSubstr("Failed to register for 'mervale' scheme. "
                                        "Status=4294956486ll\n"));
  EXPECT_THAT(process->err(), HasSubstr("Failed to register for supported protocol schemes\n"));
  EXPECT_EQ(readFile(list), malformed);
  EXPECT_EQ(portal.requests().size(), 0U);
}

TEST_F(DesktopIntegration, EntrySwitchedOffByItsUserStaysOffAndUnchanged) {
  for (const char* key : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
    const std::string entry =
        "[Desktop Entry]\nType=Application\nName=Vendril\nExec=" + InstalledAgent::program() +
        "\n" + key + "\n";
    writeFile(autostart, entry);
    const auto time = std::filesystem::last_write_time(autostart);
    startOnce();
    EXPECT_EQ(readFile(autostart), entry);
    EXPECT_EQ(std::filesystem::last_write_time(autostart), time);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(autostart.parent_path()),
                            std::filesystem::directory_iterator()),
              1)
        << "no second entry stands beside it";
  }
}

TEST_F(DesktopIntegration, EntryWhoseProgramHasMovedIsHealed) {
  writeFile(autostart,
            "[Desktop Entry]\nType=Application\nName=Vendril\nExec=/nonexistent/vendril\n");
  startOnce();
  EXPECT_THAT(readFile(autostart), HasSubstr("Exec=" + InstalledAgent::program() + "\n"));
}

TEST_F(DesktopIntegration, ForeignAutostartLauncherStartsTheEntryThatTheAgentAdds) {
  startOnce();
  ASSERT_TRUE(runMainLoopUntil([this] { return !agent.ownerProcess(); }));
  ChildProcess launcher({"dex", "--autostart", "--search-paths", autostart.parent_path().string()});
  EXPECT_TRUE(runMainLoopUntil([this] { return agent.ownerProcess().has_value(); }))
      << launcher.err();
}

}  // namespace
}  // namespace vendril
