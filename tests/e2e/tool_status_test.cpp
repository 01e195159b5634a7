#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "support/JsonText.h"
#include "support/ToolFixture.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kEntry = "com.brelto.vendril.desktop";
constexpr const char* kClosing = "/nonexistent/bus";
constexpr const char* kService = "com.brelto.vendril.service";

/// `vendrilctl status` on a desktop where one thing is wrong. Where a command mends it, the test
/// runs that command as it stands.
class ToolStatus : public ToolFixture {
 protected:
  /// The agent has run once, as it has on every desktop in use.
  void startOnce() const {
    const auto process = agent.startAndWait();
    process->signal(SIGTERM);
    ASSERT_EQ(process->waitForExit(), 0) << process->err();
  }

  void installRival() const {
    files.application("rival", "MimeType=x-scheme-handler/vendril;x-scheme-handler/mervale;\n");
    files.mimeApps("[Default Applications]\nx-scheme-handler/vendril=rival.desktop\n");
    ASSERT_EQ(
        InstalledAgent::run({"update-desktop-database", agent.home().data() / "applications"}), 0);
  }

  /// An installation of the test's own that is nothing but the two programs.
  static void installInto(const std::filesystem::path& prefix) {
    std::filesystem::create_directories(prefix / "bin");
    std::filesystem::copy_file(InstalledAgent::program(), prefix / "bin/vendril");
    std::filesystem::copy_file(program(), prefix / "bin/vendrilctl");
  }

  /// What that installation's `status` says would mend the finding.
  static std::string remedyOf(const std::string& tool, const std::string& name) {
    const Object answer = parseJsonObject(runProgram({tool, "status", "--json"}).out);
    for (const PropertyList& element : *answer.at("checks").get<PropertyList::Array>()) {
      const Object& object = *element.get<Object>();
      if (textAt(object, "check") == name) {
        return textAt(object, "remedy");
      }
    }
    return "";
  }

  static std::string serviceText(const std::string& program) {
    return std::string("[D-BUS Service]\nName=com.brelto.vendril\nExec=") + program + "\n";
  }

  /// The environment of a session that does not look into the installation's prefix.
  ChildProcess::Environment withoutPrefix() const {
    return {{"XDG_DATA_DIRS", agent.home().systemData().string() + ":/usr/share"}};
  }

  const std::filesystem::path service = agent.home().data() / "dbus-1/services" / kService;
};

TEST_F(ToolStatus, HealthyInstallationWithARunningAgentHasNothingToMend) {
  startOnce();
  const auto process = agent.startAndWait();
  const ProgramRun text = run({"status"});
  EXPECT_EQ(text.status, 0) << text.out;
  EXPECT_EQ(text.err, "");
  EXPECT_THAT(text.out, StartsWith("Vendril 1.0.0.1: healthy\n"));
  EXPECT_THAT(text.out, HasSubstr("ok agent running: running since "));
  EXPECT_THAT(text.out, HasSubstr(", process " + std::to_string(process->pid()) + "\n"));
  EXPECT_THAT(text.out, Not(HasSubstr("mend:")));
  const std::map<std::string, std::string> expected{{"session", "reached"},
                                                    {"program", "installed"},
                                                    {"agent", "running"},
                                                    {"bus-service", "known"},
                                                    {"desktop-entry", "valid"},
                                                    {"associations", "readable"},
                                                    {"handler-vendril", "default"},
                                                    {"handler-mervale", "default"},
                                                    {"login-item", "on"},
                                                    {"stale-login-items", "none"},
                                                    {"configuration", "published"},
                                                    {"client", "found"},
                                                    {"log-directory", "will-be-created"},
                                                    {"journal", verdicts()["journal"]}};
  EXPECT_EQ(verdicts(), expected);
  const Object answer = json({"status"});
  EXPECT_EQ(textAt(answer, "command"), "status");
  EXPECT_EQ(textAt(answer, "verdict"), "healthy");
  EXPECT_EQ(textAt(answer, "program"), InstalledAgent::program());
}

TEST_F(ToolStatus, AgentThatIsNotRunningIsWorthANote) {
  expectFinding("agent", "not-running", "note");
}

TEST_F(ToolStatus, StoppedAgentDoesNotAnswerAndCanBeContinued) {
  const auto process = agent.startAndWait();
  process->signal(SIGSTOP);
  expectFinding("agent", "not-answering", "error");
  mend("agent");
  expectFinding("agent", "running", "ok");
}

TEST_F(ToolStatus, AgentOfAnotherInstallationIsFoundAndEnded) {
  const auto other = agent.home().root() / "other/bin/vendril";
  std::filesystem::create_directories(other.parent_path());
  std::filesystem::copy_file(InstalledAgent::program(), other);
  ChildProcess process({other.string()});
  ASSERT_TRUE(process.waitForErr("Started")) << process.err();
  expectFinding("agent", "other-program", "warning");
  mend("agent");
  EXPECT_EQ(process.waitForExit(), 0);
}

TEST_F(ToolStatus, AgentThatRunsAReplacedProgramIsFound) {
  const auto prefix = agent.home().root() / "prefix/bin";
  std::filesystem::create_directories(prefix);
  std::filesystem::copy_file(InstalledAgent::program(), prefix / "vendril");
  std::filesystem::copy_file(program(), prefix / "vendrilctl");
  ChildProcess process({(prefix / "vendril").string()});
  ASSERT_TRUE(process.waitForErr("Started")) << process.err();
  std::filesystem::remove(prefix / "vendril");
  std::filesystem::copy_file(InstalledAgent::program(), prefix / "vendril");
  const ProgramRun text = runProgram({(prefix / "vendrilctl").string(), "status"});
  EXPECT_THAT(text.out, HasSubstr("warning agent outdated: "));
}

TEST_F(ToolStatus, AgentThatHasLostTheBusIsFound) {
  const ChildProcess::Environment bus{
      {"DBUS_SESSION_BUS_ADDRESS", std::string("unix:path=") + kClosing}};
  ChildProcess process({InstalledAgent::program()}, bus);
  ASSERT_TRUE(process.waitForErr("Started")) << process.err();
  expectFinding("agent", "off-bus", "warning", bus);
}

TEST_F(ToolStatus, MissingProgramIsToBeInstalledAgain) {
  const auto bin = agent.home().root() / "lone/bin";
  std::filesystem::create_directories(bin);
  std::filesystem::copy_file(program(), bin / "vendrilctl");
  const ProgramRun text = runProgram({(bin / "vendrilctl").string(), "status"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, HasSubstr("error program missing: " + bin.string() + "/vendril is not"));
  EXPECT_THAT(text.out, HasSubstr("  mend: cmake --install build/release --prefix " +
                                  bin.parent_path().string() + "\n"));
}

TEST_F(ToolStatus, NoBusServiceFileIsFoundAndOneIsProvided) {
  std::filesystem::remove(agent.home().data() / "dbus-1/services" / kService);
  const ChildProcess::Environment elsewhere = withoutPrefix();
  ASSERT_EQ(InstalledAgent::run({"gdbus", "call", "--session", "--dest", "org.freedesktop.DBus",
                                 "--object-path", "/org/freedesktop/DBus", "--method",
                                 "org.freedesktop.DBus.ReloadConfig"}),
            0);
  expectFinding("bus-service", "missing", "error", elsewhere);
  mend("bus-service", elsewhere);
  expectFinding("bus-service", "known", "ok", elsewhere);
}

TEST_F(ToolStatus, BusServiceThatTheBusHasNotReadIsFound) {
  std::filesystem::remove(service);
  agent.bus().signal(SIGHUP);
  ASSERT_TRUE(runMainLoopUntil([] {
    return textAt(check("bus-service"), "verdict") == "not-loaded";
  })) << "the installation's own file is there, and this bus does not look into the prefix";
  expectFinding("bus-service", "not-loaded", "error");
}

TEST_F(ToolStatus, BusServiceOfAnotherProgramIsReplaced) {
  const std::string other = files.program("other/vendril");
  for (const auto& [exec, verdict] : std::map<std::string, std::string>{
           {"/nonexistent/vendril", "program-missing"}, {other, "other-program"}}) {
    agent.bus().addService("com.brelto.vendril", exec);
    expectFinding("bus-service", verdict, "error");
    mend("bus-service");
    expectFinding("bus-service", "known", "ok");
    std::filesystem::remove(agent.home().data() / "dbus-1/services" / kService);
  }
}

TEST_F(ToolStatus, MalformedBusServiceIsFound) {
  const std::map<std::string, std::string> faults{
      {"malformed", "this is no service\n"},
      {"wrong-name", "[D-BUS Service]\nName=com.example.other\nExec=/bin/true\n"}};
  for (const auto& [verdict, text] : faults) {
    writeFile(service, text);
    expectFinding("bus-service", verdict, "error");
    mend("bus-service");
    expectFinding("bus-service", "known", "ok");
    std::filesystem::remove(service);
  }
}

TEST_F(ToolStatus, UnitThatSystemdDoesNotLookForIsDoneWithout) {
  const std::string own = InstalledAgent::prefix() + "/share/dbus-1/services/" + kService;
  const std::string before = readFile(own);
  const ChildProcess::Environment elsewhere = withoutPrefix();
  writeFile(agent.home().runtime() / "systemd/private", "");
  // The bus watches the directory and is to know the service all along.
  std::filesystem::create_symlink(own, agent.home().root() / "link");
  std::filesystem::rename(agent.home().root() / "link", service);
  expectFinding("bus-service", "unit-missing", "error", elsewhere);
  mend("bus-service", elsewhere);
  expectFinding("bus-service", "known", "ok", elsewhere);
  EXPECT_EQ(readFile(own), before) << "the link was written through";
  std::filesystem::remove(service);
  writeFile(service, "this is no service\n");
  mend("bus-service", elsewhere);
  expectFinding("bus-service", "known", "ok", elsewhere);
}

TEST_F(ToolStatus, BusServiceIsWrittenInPlaceOfALinkThatLeadsNowhere) {
  const auto other = agent.home().root() / "other";
  installInto(other);
  std::filesystem::remove(service);
  std::filesystem::create_symlink("/nonexistent/directory/file", service);
  const std::string tool = other / "bin/vendrilctl";
  const std::string remedy = remedyOf(tool, "bus-service");
  const ProgramRun shell = runProgram({"bash", "-c", remedy});
  EXPECT_EQ(shell.status, 0) << remedy << "\n" << shell.err;
  EXPECT_EQ(readFile(service), serviceText(other / "bin/vendril"));
}

TEST_F(ToolStatus, DamagedBusServiceOfTheInstallationItselfIsInstalledAgain) {
  for (const auto& prefix : {agent.home().root() / "other", agent.home().home() / ".local"}) {
    const std::string reinstall = "cmake --install build/release --prefix " + prefix.string();
    const std::string tool = prefix / "bin/vendrilctl";
    installInto(prefix);
    writeFile(prefix / "share/dbus-1/services" / kService, "this is no service\n");
    EXPECT_EQ(remedyOf(tool, "bus-service"), reinstall) << prefix;
  }
}

TEST_F(ToolStatus, BusServiceOfAProgramWithAnOddPathIsQuotedAsTheBusReadsIt) {
  const auto other = agent.home().root() / "it's a \\ 100% $HOME";
  installInto(other);
  const std::string tool = other / "bin/vendrilctl";
  const ProgramRun shell = runProgram({"bash", "-c", remedyOf(tool, "bus-service")});
  EXPECT_EQ(shell.status, 0) << shell.err;
  EXPECT_THAT(runProgram({tool, "status"}).out, HasSubstr("ok bus-service known: "));
  const ProgramRun started =
      runProgram({"gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
                  "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.StartServiceByName",
                  "com.brelto.vendril", "0"});
  EXPECT_EQ(started.status, 0) << started.err << readFile(service);
  EXPECT_THAT(runProgram({tool, "status"}).out, HasSubstr("ok agent running: "));
}

TEST_F(ToolStatus, UnitThatSystemdCannotStartIsFoundWhereThereIsASystemd) {
  writeFile(agent.home().data() / "dbus-1/services" / kService,
            "[D-BUS Service]\nName=com.brelto.vendril\nExec=" + InstalledAgent::program() +
                "\nSystemdService=vendril-of-this-test.service\n");
  expectFinding("bus-service", "known", "ok");
  writeFile(agent.home().runtime() / "systemd/private", "");
  expectFinding("bus-service", "unit-missing", "error");
  const auto unit = agent.home().config() / "systemd/user/vendril-of-this-test.service";
  std::filesystem::create_directories(unit.parent_path());
  std::filesystem::create_symlink("/dev/null", unit);
  expectFinding("bus-service", "unit-masked", "error");
  std::filesystem::remove(unit);
  writeFile(unit, "[Unit]\n");
  expectFinding("bus-service", "known", "ok");
}

TEST_F(ToolStatus, PrefixThatTheDesktopDoesNotLookIntoIsFoundAndItsEntryLinked) {
  const ChildProcess::Environment elsewhere = withoutPrefix();
  expectFinding("desktop-entry", "invisible", "error", elsewhere);
  expectFinding("handler-vendril", "no-handler", "error", elsewhere);
  mend("desktop-entry", elsewhere);
  expectFinding("desktop-entry", "valid", "ok", elsewhere);
  expectFinding("handler-vendril", "default", "ok", elsewhere);
}

TEST_F(ToolStatus, UsersEntryThatStandsBeforeTheInstalledOneIsFoundAndMovedAway) {
  const auto entry = agent.home().data() / "applications" / kEntry;
  const std::string head = "[Desktop Entry]\nType=Application\nName=Vendril\n";
  const std::string other = files.program("other/vendril");
  const std::map<std::string, std::string> faults{
      {"malformed", "nothing\n"},
      {"hidden", head + "Hidden=true\nExec=" + InstalledAgent::program() + " %u\n"},
      {"program-missing", head + "Exec=/nonexistent/vendril %u\n"},
      {"scheme-missing",
       head + "Exec=" + InstalledAgent::program() + " %u\nMimeType=x-scheme-handler/vendril;\n"}};
  for (const auto& [verdict, text] : faults) {
    writeFile(entry, text);
    expectFinding("desktop-entry", verdict, "error");
    mend("desktop-entry");
    expectFinding("desktop-entry", "valid", "ok");
    EXPECT_EQ(readFile(entry.string() + ".bad"), text) << verdict;
  }
  EXPECT_EQ(readFile(entry.string() + ".bad.~1~"), faults.at("hidden"));
  writeFile(entry, head + "Exec=" + other + " %u\n");
  expectFinding("desktop-entry", "other-program", "warning");
}

TEST_F(ToolStatus, EntryOfAnotherInstallationStaysAndTheOwnOneIsPutBeforeIt) {
  const std::string other = files.program("other/vendril");
  const auto entry = files.systemApplication("com.brelto.vendril");
  const std::string text = desktopEntryText("Vendril", other + " %u");
  writeFile(entry, text);
  const ChildProcess::Environment otherFirst{
      {"XDG_DATA_DIRS",
       agent.home().systemData().string() + ":" + InstalledAgent::prefix() + "/share:/usr/share"}};
  expectFinding("desktop-entry", "other-program", "warning", otherFirst);
  mend("desktop-entry", otherFirst);
  expectFinding("desktop-entry", "valid", "ok", otherFirst);
  EXPECT_EQ(readFile(entry), text);
}

TEST_F(ToolStatus, CacheThatDoesNotNameTheEntryIsRenewed) {
  const auto entry = agent.home().data() / "applications" / kEntry;
  std::filesystem::create_directories(entry.parent_path());
  std::filesystem::copy_file(InstalledAgent::prefix() + "/share/applications/" + kEntry, entry);
  expectFinding("desktop-entry", "not-cached", "warning");
  mend("desktop-entry");
  expectFinding("desktop-entry", "valid", "ok");
}

TEST_F(ToolStatus, OtherDefaultHandlerIsNamedAndReplaced) {
  installRival();
  expectFinding("handler-vendril", "other-handler", "error");
  const Object found = check("handler-vendril");
  const Object& details = *found.at("details").get<Object>();
  EXPECT_EQ(textAt(details, "handler"), "rival");
  EXPECT_EQ(description(details.at("candidates")), "(\n    rival,\n    com.brelto.vendril\n)");
  EXPECT_THAT(run({"status"}).out, HasSubstr(": rival opens vendril links\n"));
  mend("handler-vendril");
  expectFinding("handler-vendril", "default", "ok");
  EXPECT_THAT(run({"status"}).out, HasSubstr("; so could rival\n"));
}

TEST_F(ToolStatus, ListThatDoesNotParseIsNamedByItsLineAndMended) {
  installRival();
  writeFile(associations, "[Default Applications]\ntext/html=b.desktop\nno entry\n");
  expectFinding("associations", "malformed", "error");
  EXPECT_THAT(run({"status"}).out, HasSubstr("line 3 of "));
  mend("associations");
  expectFinding("associations", "readable", "ok");
  EXPECT_EQ(readFile(associations), "[Default Applications]\ntext/html=b.desktop\n# no entry\n");
}

TEST_F(ToolStatus, LoginItemThatIsOffSwitchedOffOrBrokenIsFoundAndSwitchedOn) {
  const std::string head = "[Desktop Entry]\nType=Application\nName=Vendril\n";
  expectFinding("login-item", "off", "note");
  writeFile(autostart / kEntry, head + "Exec=/nonexistent/vendril\n");
  expectFinding("login-item", "broken", "warning");
  mend("login-item");
  expectFinding("login-item", "on", "ok");
  for (const char* key : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
    writeFile(autostart / kEntry, head + "Exec=" + InstalledAgent::program() + "\n" + key);
    expectFinding("login-item", "switched-off", "note");
    mend("login-item");
    expectFinding("login-item", "on", "ok");
  }
}

TEST_F(ToolStatus, LoginItemIsThatOfThisInstallationWhereAnotherOneHasItsOwn) {
  const std::string head = "[Desktop Entry]\nType=Application\nName=Vendril\n";
  const std::string others = head + "Exec=" + files.program("other/vendril").string() + "\n";
  writeFile(autostart / kEntry, others + "Hidden=true\n");
  expectFinding("login-item", "off", "note");
  const auto own = autostart / "com.brelto.vendril-2.desktop";
  writeFile(own, head + "Exec=" + InstalledAgent::program() + "\n");
  expectFinding("login-item", "on", "ok");
  writeFile(autostart / kEntry, others);
  writeFile(own, head + "Exec=" + InstalledAgent::program() + "\nHidden=true\n");
  expectFinding("login-item", "switched-off", "note");
  mend("login-item");
  expectFinding("login-item", "on", "ok");
  EXPECT_EQ(readFile(autostart / kEntry), others);
}

TEST_F(ToolStatus, StaleLoginItemIsNamedAndRemoved) {
  files.autostart("old.desktop", desktopEntryText("Brelto Orvanta", "/nonexistent/orvanta"));
  expectFinding("stale-login-items", "found", "warning");
  EXPECT_THAT(run({"status"}).out, HasSubstr("left by an earlier installation: Brelto Orvanta ("));
  mend("stale-login-items");
  expectFinding("stale-login-items", "none", "ok");
  EXPECT_FALSE(std::filesystem::exists(autostart / "old.desktop"));
}

TEST_F(ToolStatus, MalformedConfigurationIsFoundAndMovedOutOfTheWay) {
  writeFile(agent.configurationPath(), "<plist>");
  expectFinding("configuration", "malformed", "error");
  expectFinding("client", "unnamed", "warning");
  mend("configuration");
  expectFinding("configuration", "missing", "warning");
  EXPECT_EQ(readFile(agent.configurationPath() + ".bad"), "<plist>");
  writeFile(agent.configurationPath(), "<plist version='1.0'>");
  mend("configuration");
  EXPECT_EQ(readFile(agent.configurationPath() + ".bad"), "<plist version='1.0'>");
  EXPECT_EQ(readFile(agent.configurationPath() + ".bad.~1~"), "<plist>");
}

TEST_F(ToolStatus, ConfigurationThatCannotBeReachedIsNotTakenForMissing) {
  std::filesystem::remove(agent.configurationPath());
  std::filesystem::create_symlink(agent.configurationPath(), agent.configurationPath());
  expectFinding("configuration", "unreadable", "error");
  EXPECT_FALSE(check("configuration").contains("remedy"));
}

TEST_F(ToolStatus, ClientThatIsMissingOrCannotBeRunIsFound) {
  std::filesystem::permissions(client, std::filesystem::perms::owner_read);
  expectFinding("client", "not-executable", "warning");
  mend("client");
  expectFinding("client", "found", "ok");
  std::filesystem::remove(client);
  expectFinding("client", "missing", "error");
}

TEST_F(ToolStatus, LogDirectoryThatIsAFileIsFoundAndTheFileKept) {
  const auto logs = agent.home().root() / "logs";
  writeFile(logs, "dear");
  expectFinding("log-directory", "not-writable", "warning");
  mend("log-directory");
  expectFinding("log-directory", "ready", "ok");
  EXPECT_EQ(readFile(logs.string() + ".bad"), "dear");
}

}  // namespace
}  // namespace vendril
