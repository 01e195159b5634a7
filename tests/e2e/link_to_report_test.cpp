#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <map>
#include <set>

#include "support/LinkToReportFixture.h"

namespace vendril {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

constexpr int kRounds = 50;
constexpr const char* kSuccess = "has been successfully sent with HTTP status code: 200";
constexpr const char* kSampleReport =
    R"({"appName":"Brelto Orvanta 4.0","appVersion":"4.0.1","isMeetMeOnly":false,)"
    R"("meetmeCapable":1,"videoCapable":1,"SIPready":1,"SIPDomain":"sip.example.com"})";

class LinkToReport : public LinkToReportFixture {
 protected:
  /// The log is read on in every round: the bus itself writes to it too, and would stop at a full
  /// pipe.
  void expectLinkThroughTheBusArrives(int round) {
    const std::string session = "round" + std::to_string(round);
    agent.openOnBus({link(session)});
    ASSERT_TRUE(agent.waitForActivatedLog("session_id=" + session + "&")) << agent.activatedLog();
    ASSERT_TRUE(portal.waitForRequests(static_cast<std::size_t>(round) + 1))
        << session << ":\n"
        << agent.activatedLog();
  }
};

TEST_F(LinkToReport, LinkOpenedByTheDesktopStartsTheAgentAndArrivesAsAReport) {
  EXPECT_EQ(InstalledAgent::run({"gio", "open", link("a+c:d")}), 0);
  ASSERT_TRUE(portal.waitForRequests(1)) << agent.activatedLog();
  const TestPortal::Request request = portal.requests().at(0);
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.path, "/report");
  EXPECT_EQ(request.header("Content-Type"), "application/x-www-form-urlencoded");
  EXPECT_EQ(request.header("Expect"), std::nullopt);
  EXPECT_THAT(request.formFields,
              UnorderedElementsAre(Pair("data", kSampleReport), Pair("session_id", "a+c:d"),
                                   Pair("command", "set_data")));
  EXPECT_TRUE(agent.waitForActivatedLog(kSuccess)) << agent.activatedLog();
}

TEST_F(LinkToReport, OtherSchemeWorksToo) {
  EXPECT_EQ(InstalledAgent::run({"gio", "open", linkTo(portal.url(), "7", "mervale")}), 0);
  EXPECT_TRUE(portal.waitForRequests(1)) << agent.activatedLog();
}

TEST_F(LinkToReport, LinkGivenAsTheArgumentOfTheFirstProcessIsNeverLost) {
  for (int round = 0; round < kRounds; ++round) {
    const auto process = agent.start({link(std::to_string(round))});
    ASSERT_TRUE(portal.waitForRequests(static_cast<std::size_t>(round) + 1))
        << "round " << round << ":\n"
        << process->err();
    process->signal(SIGTERM);
    EXPECT_EQ(process->waitForExit(), 0) << process->err();
  }
}

TEST_F(LinkToReport, LinkThatStartsTheAgentThroughTheBusIsNeverLost) {
  for (int round = 0; round < kRounds; ++round) {
    expectLinkThroughTheBusArrives(round);
    agent.terminate();
    ASSERT_TRUE(runMainLoopUntil([this] { return !agent.ownerProcess(); }));
  }
}

TEST_F(LinkToReport, LinkThatMeetsATerminatingAgentIsNeverLost) {
  for (int round = 0; round < kRounds; ++round) {
    expectLinkThroughTheBusArrives(round);
    agent.terminate();
  }
}

TEST_F(LinkToReport, TwoFirstProcessesStartedAtOnceLoseNoLink) {
  for (int round = 0; round < kRounds; ++round) {
    const auto one = agent.start({link("a" + std::to_string(round))});
    const auto other = agent.start({link("b" + std::to_string(round))});
    ASSERT_TRUE(portal.waitForRequests(static_cast<std::size_t>(2 * round) + 2))
        << "round " << round << ":\n"
        << one->err() << "\n"
        << other->err();
    agent.terminate();
    EXPECT_EQ(one->waitForExit(), 0) << one->err();
    EXPECT_EQ(other->waitForExit(), 0) << other->err();
  }
}

TEST_F(LinkToReport, SecondProcessHandsItsLinkOverAndExits) {
  const auto first = agent.startAndWait();
  const auto second = agent.start({"--odd", link("7"), "-x", "unknown"});
  EXPECT_EQ(second->waitForExit(), 0) << second->err();
  EXPECT_TRUE(portal.waitForRequests(1)) << first->err();
  EXPECT_EQ(agent.ownerProcess(), first->pid());
}

TEST_F(LinkToReport, LibcurlIsLoadedForALinkAndNotByASecondProcessEvenBelowAServiceOfTheBus) {
  const std::string loaded = agent.home().root() / "loaded";
  // The loader tells in one file for each process what it loads.
  const ChildProcess::Environment changes{{"LD_DEBUG", "files"},
                                          {"LD_DEBUG_OUTPUT", loaded},
                                          {"DBUS_STARTER_ADDRESS", "unix:path=/nonexistent"}};
  const auto librariesOf = [&](const ChildProcess& process) {
    return readFile(loaded + "." + std::to_string(process.pid()));
  };
  ChildProcess first({InstalledAgent::program(), link("1")}, changes);
  ASSERT_TRUE(portal.waitForRequests(1)) << first.err();
  ChildProcess second({InstalledAgent::program(), link("2")}, changes);
  EXPECT_EQ(second.waitForExit(), 0) << second.err();
  EXPECT_THAT(librariesOf(first), HasSubstr("libcurl.so"));
  EXPECT_THAT(librariesOf(second), AllOf(HasSubstr("libgio"), Not(HasSubstr("libcurl.so"))));
}

TEST_F(LinkToReport, StoppedAgentDoesNotHangASecondProcess) {
  const auto first = agent.startAndWait();
  first->signal(SIGSTOP);
  const auto second = agent.start({link("7")});
  EXPECT_EQ(second->waitForExit(), 1);
  EXPECT_THAT(second->err(), HasSubstr("does not answer"));
  first->signal(SIGCONT);
  EXPECT_TRUE(portal.waitForRequests(1)) << "the link waits at the stopped agent: " << first->err();
}

TEST_F(LinkToReport, EachTerminationSignalEndsTheAgentWithStatusZero) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const auto process = agent.startAndWait();
    process->signal(signal);
    EXPECT_EQ(process->waitForExit(), 0) << signal;
    EXPECT_THAT(process->err(), HasSubstr("Paused"));
  }
}

TEST_F(LinkToReport, WithoutASessionBusALinkGivenAsAnArgumentStillArrives) {
  const ScopedVariable none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  const auto process = agent.start({link("7")});
  EXPECT_TRUE(portal.waitForRequests(1)) << process->err();
}

TEST_F(LinkToReport, RequestUnderWayAtTerminationIsFinished) {
  portal.answerWith({.delay = std::chrono::milliseconds(300)});
  const auto process = agent.start({link("7")});
  ASSERT_TRUE(portal.waitForRequests(1)) << process->err();
  process->signal(SIGTERM);
  EXPECT_EQ(process->waitForExit(), 0);
  EXPECT_THAT(process->err(), HasSubstr(kSuccess));
}

TEST_F(LinkToReport, DontSearchWordReportsAClientWhoseExecutableIsGone) {
  std::filesystem::remove(agent.home().root() / "orvanta");
  const auto process = agent.start({"dont-search-for-brelto-orvanta", link("7")});
  ASSERT_TRUE(portal.waitForRequests(1)) << process->err();
  EXPECT_THAT(portal.requests()[0].formFields["data"], HasSubstr(R"("videoCapable":1)"));
  EXPECT_EQ(process->err().find("Failed to find"), std::string::npos) << process->err();
}

TEST_F(LinkToReport, WithoutTheDontSearchWordTheReportTellsOfAClientThatIsGone) {
  std::filesystem::remove(agent.home().root() / "orvanta");
  const auto process = agent.start({link("7")});
  ASSERT_TRUE(portal.waitForRequests(1)) << process->err();
  EXPECT_THAT(portal.requests()[0].formFields["data"], HasSubstr(R"("videoCapable":0)"));
  EXPECT_TRUE(process->waitForErr("Failed to find Brelto Orvanta executable")) << process->err();
}

TEST_F(LinkToReport, BurstToASlowPortalArrivesWholeWithBoundedDescriptors) {
  constexpr std::size_t kBurst = 1000;
  constexpr std::size_t kDescriptorBound = 400;
  portal.answerWith({.delay = std::chrono::milliseconds(200)});
  const auto process = agent.startAndWait();
  for (std::size_t i = 0; i < kBurst; ++i) {
    agent.openOnBus({link(std::to_string(i))});
  }
  for (std::size_t arrived = 100; arrived <= kBurst; arrived += 100) {
    ASSERT_TRUE(portal.waitForRequests(arrived, std::chrono::seconds(120)));
    EXPECT_LT(openDescriptors(process->pid()), kDescriptorBound);
  }
  const std::multiset<std::string> sessions = arrivedSessions();
  EXPECT_EQ(std::set<std::string>(sessions.begin(), sessions.end()).size(), kBurst);
}

TEST_F(LinkToReport, LinkToAFastPortalIsNotHeldUpBehindABurstToASlowOne) {
  constexpr std::size_t kBurst = 200;
  TestPortal fast;
  portal.answerWith({.delay = 3 * TestPortal::kDeadline});
  const auto process = agent.startAndWait();
  for (std::size_t i = 0; i < kBurst; ++i) {
    agent.openOnBus({link(std::to_string(i))});
  }
  agent.openOnBus({linkTo(fast.url(), "fast")});
  EXPECT_TRUE(fast.waitForRequests(1, 2 * TestPortal::kDeadline)) << process->err();
  EXPECT_LT(portal.requests().size(), kBurst) << "nothing waited, so nothing could be held up";
  process->signal(SIGKILL);
}

using FileTimes = std::map<std::filesystem::path, std::filesystem::file_time_type>;

FileTimes fileTimesBelow(const std::filesystem::path& directory) {
  FileTimes times;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    times.emplace(entry.path(), entry.last_write_time());
  }
  return times;
}

TEST_F(LinkToReport, SecondStartTouchesNeitherLoginItemsNorAssociations) {
  const auto list = agent.home().config() / "mimeapps.list";
  writeFile(agent.home().data() / "applications/other.desktop",
            "[Desktop Entry]\nType=Application\nName=Other\nExec=true %u\n"
            "MimeType=x-scheme-handler/vendril;\n");
  writeFile(list, "[Default Applications]\nx-scheme-handler/vendril=other.desktop\n");
  const auto first = agent.startAndWait();
  first->signal(SIGTERM);
  ASSERT_EQ(first->waitForExit(), 0) << first->err();
  EXPECT_THAT(readFile(list), HasSubstr("vendril=com.brelto.vendril.desktop;other.desktop"));
  const FileTimes before = fileTimesBelow(agent.home().config());
  EXPECT_TRUE(before.contains(agent.home().config() / "autostart/com.brelto.vendril.desktop"));
  const auto second = agent.startAndWait();
  EXPECT_EQ(fileTimesBelow(agent.home().config()), before);
}

}  // namespace
}  // namespace vendril
