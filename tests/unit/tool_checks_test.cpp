#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "platform/freedesktop/MimeAppsList.h"
#include "support/TemporaryDirectory.h"
#include "tools/checks/AgentCheck.h"
#include "tools/checks/BusServiceCheck.h"
#include "tools/checks/ConfigurationCheck.h"
#include "tools/checks/DesktopEntryCheck.h"
#include "tools/checks/HandlerCheck.h"
#include "tools/checks/LogCheck.h"
#include "tools/checks/LoginItemCheck.h"
#include "tools/checks/SessionCheck.h"

namespace vendril::tools {
namespace {

using ::testing::HasSubstr;

void expectCheck(const Check& check, const std::string& verdict, Level level,
                 const std::optional<std::string>& remedy) {
  EXPECT_EQ(check.verdict, verdict);
  EXPECT_EQ(nameOf(check.level), nameOf(level)) << verdict;
  EXPECT_EQ(check.remedy, remedy) << verdict;
}

TEST(ToolChecks, SudoOutweighsTheBusOfRoot) {
  SessionFacts facts;
  facts.bus = Bus::State::unnamed;
  facts.sudoUser = "alice";
  facts.sudoUserId = "1000";
  facts.command = "vendrilctl";
  expectCheck(sessionCheck(facts), "other-user", Level::warning,
              "sudo -u alice XDG_RUNTIME_DIR=/run/user/1000 vendrilctl status");
}

TEST(ToolChecks, IdOfTheUserBehindSudoIsUsedOnlyWhenItIsANumber) {
  SessionFacts facts;
  facts.sudoUser = "alice";
  facts.command = "vendrilctl";
  for (const char* id : {"", "1;reboot", "-1", "$(id)"}) {
    facts.sudoUserId = id;
    expectCheck(sessionCheck(facts), "other-user", Level::warning,
                "sudo -u alice vendrilctl status");
  }
}

TEST(ToolChecks, RootWhoBecameRootAnewLooksAtHerOwnSession) {
  SessionFacts facts;
  facts.sudoUser = "root";
  facts.sudoUserId = "0";
  expectCheck(sessionCheck(facts), "reached", Level::ok, std::nullopt);
}

TEST(ToolChecks, BusThatIsThereButNotNamedIsNamed) {
  SessionFacts facts;
  facts.bus = Bus::State::unnamed;
  expectCheck(sessionCheck(facts), "no-bus", Level::error, std::nullopt);
  facts.likelyBus = "unix:path=/run/user/1000/bus";
  expectCheck(sessionCheck(facts), "no-bus", Level::error,
              "export DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/1000/bus");
}

TEST(ToolChecks, FilesOfThePackageComeFromThePackageAgainAndOthersFromTheBuild) {
  Surroundings surroundings;
  surroundings.program = "/usr/bin/vendril";
  EXPECT_EQ(surroundings.reinstallCommand(), "sudo apt-get install --reinstall vendril");
  surroundings.program = "/usr/local/bin/vendril";
  EXPECT_EQ(surroundings.reinstallCommand(), "cmake --install build/release --prefix /usr/local");
}

class AgentChecks : public ::testing::Test {
 protected:
  AgentChecks() {
    facts.program = "/usr/bin/vendril";
    facts.owner = Process{42, "/usr/bin/vendril", false, false, Date()};
  }

  AgentFacts facts;
};

TEST_F(AgentChecks, RunningAgentIsToldWithItsProcessAndStart) {
  const Check check = agentCheck(facts);
  expectCheck(check, "running", Level::ok, std::nullopt);
  EXPECT_THAT(check.summary, HasSubstr("process 42"));
  EXPECT_EQ(check.details.at("since"), PropertyList("1970-01-01 00:00:00 +0000"));
}

TEST_F(AgentChecks, SilenceOutweighsEverythingElse) {
  facts.owner->program = "/opt/vendril/bin/vendril";
  facts.owner->isOutdated = true;
  facts.answers = false;
  expectCheck(agentCheck(facts), "not-answering", Level::error, "kill -KILL 42");
  facts.owner->isStopped = true;
  expectCheck(agentCheck(facts), "not-answering", Level::error, "kill -CONT 42");
}

TEST_F(AgentChecks, OldProgramIsOneOfAnotherPlaceOrOfAnotherTime) {
  facts.owner->isOutdated = true;
  expectCheck(agentCheck(facts), "outdated", Level::warning, "kill 42");
  facts.owner->program = "/opt/vendril/bin/vendril";
  expectCheck(agentCheck(facts), "other-program", Level::warning, "kill 42");
}

TEST_F(AgentChecks, ProcessWithoutTheBusCountsOnlyWhereNobodyHasTheName) {
  facts.strays = {Process{7, facts.program, false, false, std::nullopt}};
  expectCheck(agentCheck(facts), "running", Level::ok, std::nullopt);
  facts.owner.reset();
  expectCheck(agentCheck(facts), "off-bus", Level::warning, "kill 7");
  facts.strays.clear();
  expectCheck(agentCheck(facts), "not-running", Level::note, std::nullopt);
}

class BusServiceChecks : public ::testing::Test {
 protected:
  BusServiceChecks() {
    facts.id = "com.brelto.vendril";
    facts.program = "/usr/bin/vendril";
    facts.service = BusServiceFacts::Service{"/usr/share/x.service", facts.id, "/usr/bin/vendril",
                                             "x.service", "/usr/bin/vendril"};
    facts.isKnown = true;
    facts.ownPath = "/usr/share/dbus-1/services/com.brelto.vendril.service";
    facts.own = facts.service;
    facts.own->path = facts.ownPath;
    facts.reinstallCommand = "install again";
    facts.usersDirectory = "/home/a b/services";
  }

  BusServiceFacts facts;
};

TEST_F(BusServiceChecks, ServiceThatNobodyHasReadYetIsTakenAsItIsWithoutABus) {
  expectCheck(busServiceCheck(facts), "known", Level::ok, std::nullopt);
  facts.isKnown.reset();
  expectCheck(busServiceCheck(facts), "known", Level::ok, std::nullopt);
  facts.isKnown = false;
  EXPECT_EQ(busServiceCheck(facts).verdict, "not-loaded");
}

TEST_F(BusServiceChecks, ServiceThatOnlyTheBusKnowsIsGoodEnough) {
  facts.service.reset();
  expectCheck(busServiceCheck(facts), "known", Level::ok, std::nullopt);
}

TEST_F(BusServiceChecks, MissingServiceIsLinkedOrWritten) {
  facts.service.reset();
  facts.isKnown = false;
  EXPECT_THAT(*busServiceCheck(facts).remedy,
              HasSubstr("mkdir -p '/home/a b/services' && ln -sf "
                        "/usr/share/dbus-1/services/com.brelto.vendril.service "
                        "'/home/a b/services/com.brelto.vendril.service' && gdbus "));
  facts.own.reset();
  EXPECT_THAT(*busServiceCheck(facts).remedy,
              HasSubstr("rm -f '/home/a b/services/com.brelto.vendril.service' && "
                        "printf '[D-BUS Service]\\nName=%s\\nExec=%s\\n' com.brelto.vendril "
                        "/usr/bin/vendril > '/home/a b/services/com.brelto.vendril.service'"));
}

TEST_F(BusServiceChecks, OwnServiceIsNotLinkedWhereItIsFaultyOrItsUnitIsMissing) {
  facts.service->name.reset();
  facts.ownUnit = BusServiceFacts::Unit::missing;
  EXPECT_THAT(*busServiceCheck(facts).remedy, HasSubstr("printf "));
  facts.own->program = "/opt/other/vendril";
  expectCheck(busServiceCheck(facts), "malformed", Level::error, "install again");
}

TEST_F(BusServiceChecks, FaultyServiceOfTheInstallationItselfIsInstalledAgain) {
  facts.service->path = facts.ownPath;
  facts.service->name.reset();
  facts.own.reset();
  expectCheck(busServiceCheck(facts), "malformed", Level::error, "install again");
}

TEST_F(BusServiceChecks, MissingUnitIsInstalledAgainBesideItsServiceAndElseDoneWithout) {
  facts.unit = BusServiceFacts::Unit::missing;
  EXPECT_THAT(*busServiceCheck(facts).remedy, HasSubstr("printf "));
  facts.service->path = facts.ownPath;
  expectCheck(busServiceCheck(facts), "unit-missing", Level::error, "install again");
}

TEST_F(BusServiceChecks, UnitIsLookedAtLast) {
  facts.unit = BusServiceFacts::Unit::masked;
  expectCheck(busServiceCheck(facts), "unit-masked", Level::error,
              "systemctl --user unmask x.service");
  facts.service->program.reset();
  EXPECT_EQ(busServiceCheck(facts).verdict, "program-missing");
  facts.service->name = "com.example";
  EXPECT_EQ(busServiceCheck(facts).verdict, "wrong-name");
  facts.service->exec.reset();
  EXPECT_EQ(busServiceCheck(facts).verdict, "malformed");
}

TEST(ToolChecks, EntryOfTheInstallationItselfIsInstalledAgainAndNoOtherOneIsRemoved) {
  DesktopEntryFacts facts;
  facts.ownPath = "/usr/share/applications/com.brelto.vendril.desktop";
  facts.usersDirectory = "/home/a b/applications";
  facts.reinstallCommand = "install again";
  DesktopEntryFacts::Entry entry;
  entry.path = facts.ownPath;
  entry.parses = false;
  facts.entry = entry;
  expectCheck(desktopEntryCheck(facts), "malformed", Level::error, "install again");
  facts.entry->path = "/home/a b/applications/x.desktop";
  expectCheck(desktopEntryCheck(facts), "malformed", Level::error,
              "mv --backup=numbered '/home/a b/applications/x.desktop' '/home/a "
              "b/applications/x.desktop.bad'");
  facts.entry->path = "/usr/local/share/applications/com.brelto.vendril.desktop";
  expectCheck(desktopEntryCheck(facts), "malformed", Level::error,
              "mkdir -p '/home/a b/applications' && "
              "ln -sf /usr/share/applications/com.brelto.vendril.desktop "
              "'/home/a b/applications'/ && update-desktop-database '/home/a b/applications'");
  facts.entry.reset();
  facts.isOwnThere = false;
  expectCheck(desktopEntryCheck(facts), "missing", Level::error, "install again");
}

TEST(ToolChecks, SchemeWithoutAnyHandlerIsAsBadAsOneWithAForeignOne) {
  HandlerFacts facts{"vendril", false, std::nullopt, {}, "vendrilctl register"};
  expectCheck(handlerCheck(facts), "no-handler", Level::error, "vendrilctl register");
  facts.handler = "rival";
  expectCheck(handlerCheck(facts), "other-handler", Level::error, "vendrilctl register");
}

TEST(ToolChecks, OthersWhoCouldOpenTheLinksAreNamedWithoutTheAgent) {
  HandlerFacts facts{"vendril", true, "com.brelto.vendril", {"com.brelto.vendril"}, ""};
  EXPECT_EQ(handlerCheck(facts).summary, "the agent opens vendril links");
  facts.candidates = {"rival", "com.brelto.vendril", "other"};
  expectCheck(handlerCheck(facts), "default", Level::ok, std::nullopt);
  EXPECT_EQ(handlerCheck(facts).summary, "the agent opens vendril links; so could rival, other");
}

TEST(ToolChecks, ListThatCannotBeReadIsAnErrorThatItsOwnerCanMend) {
  AssociationsFacts facts;
  facts.path = "/home/a b/mimeapps.list";
  facts.isReadable = false;
  expectCheck(associationsCheck(facts), "unreadable", Level::error, std::nullopt);
  facts.isOwnWithoutRight = true;
  expectCheck(associationsCheck(facts), "unreadable", Level::error,
              "chmod u+r '/home/a b/mimeapps.list'");
}

TEST(ToolChecks, BadLineOfALongListIsFoundInAFewReadings) {
  using Clock = std::chrono::steady_clock;
  std::string text = "[Default Applications]\n";
  for (int line = 0; line < 5000; ++line) {
    text += "text/x" + std::to_string(line) + "=a.desktop\n";
  }
  const TemporaryDirectory directory;
  const std::string path = directory.write("mimeapps.list", text + "no entry\n" + text);
  Surroundings surroundings;
  surroundings.paths.configHome = directory.path();
  const auto begin = Clock::now();
  ASSERT_TRUE(MimeAppsList::parse(text));
  const auto parsed = Clock::now();
  const std::optional<AssociationsFacts> facts = associationsFacts(surroundings);
  const auto found = Clock::now();
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->path, path);
  EXPECT_EQ(facts->badLine, 5002U);
  EXPECT_EQ(facts->badText, "no entry");
  // Some fifteen readings, where one for each line would be two thousand and more.
  EXPECT_LT((found - parsed) / (parsed - begin), 300);
}

TEST(ToolChecks, BrokenEntryDoesNotMatterWhereAnotherItemStartsTheAgent) {
  LoginItemFacts facts;
  facts.command = "vendrilctl login-item";
  facts.path = "/home/a/autostart/x.desktop";
  facts.error = "The program does not exist";
  expectCheck(loginItemCheck(facts), "on", Level::ok, std::nullopt);
  facts.isOn = false;
  expectCheck(loginItemCheck(facts), "broken", Level::warning, "vendrilctl login-item on");
}

TEST(ToolChecks, EveryStaleLoginItemIsInTheDetailsAndTheFirstInTheSentence) {
  LoginItemFacts facts;
  facts.stale = {{"Brelto Orvanta", "file:///a"}, {"Brelto Mervale", ""}};
  const Check check = staleLoginItemsCheck(facts);
  EXPECT_EQ(check.summary,
            "left by an earlier installation: Brelto Orvanta (file:///a) and 1 more");
  EXPECT_EQ(check.details.at("items").get<PropertyList::Array>()->size(), 2U);
}

TEST(ToolChecks, ConfigurationThatCannotBeReadIsAnErrorAndAMissingOneAWarning) {
  ConfigurationFacts facts;
  facts.path = "/home/a/x.plist";
  facts.file = ConfigurationFacts::File::unreadable;
  expectCheck(configurationCheck(facts), "unreadable", Level::error, "chmod u+r /home/a/x.plist");
  facts.isFileOwn = false;
  expectCheck(configurationCheck(facts), "unreadable", Level::error, std::nullopt);
  facts.file = ConfigurationFacts::File::missing;
  expectCheck(configurationCheck(facts), "missing", Level::warning, std::nullopt);
  facts.file = ConfigurationFacts::File::noHome;
  expectCheck(configurationCheck(facts), "no-home", Level::error, std::nullopt);
}

TEST(ToolChecks, ClientThatCannotBeRunIsMendedByItsOwnerAlone) {
  ConfigurationFacts facts;
  facts.executablePath = "-x";
  facts.client = ConfigurationFacts::Client::notExecutable;
  expectCheck(clientCheck(facts), "not-executable", Level::warning, "chmod +x -- -x");
  facts.isClientOwn = false;
  expectCheck(clientCheck(facts), "not-executable", Level::warning, std::nullopt);
}

TEST(ToolChecks, LogDirectoryIsMendedWhereItsObstacleIsAndOnlyByWhomItObeys) {
  LogFacts facts;
  facts.directory = "/logs/of/a";
  facts.state = LogFacts::Directory::unusable;
  expectCheck(logDirectoryCheck(facts), "not-writable", Level::warning, std::nullopt);
  facts.obstacle = LogFacts::Obstacle{"/logs/of", true, true};
  expectCheck(logDirectoryCheck(facts), "not-writable", Level::warning, "chmod u+rwx -- /logs/of");
  facts.obstacle->isFolder = false;
  expectCheck(logDirectoryCheck(facts), "not-writable", Level::warning,
              "mv -T --backup=numbered -- /logs/of /logs/of.bad && mkdir -p -- /logs/of/a");
  facts.obstacle->isChangeable = false;
  expectCheck(logDirectoryCheck(facts), "not-writable", Level::warning, std::nullopt);
}

}  // namespace
}  // namespace vendril::tools
