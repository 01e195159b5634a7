#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <set>

#include "support/LinkToReportFixture.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;
using LinkToReport = LinkToReportFixture;

constexpr int kRounds = 50;
constexpr const char* kSuccess = "has been successfully sent with HTTP status code: 200";
constexpr const char* kSampleReport =
    R"({"appName":"Brelto Orvanta 4.0","appVersion":"4.0.1","isMeetMeOnly":false,)"
    R"("meetmeCapable":1,"videoCapable":1,"SIPready":1,"SIPDomain":"sip.example.com"})";

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
    agent.openOnBus({link(std::to_string(round))});
    ASSERT_TRUE(portal.waitForRequests(static_cast<std::size_t>(round) + 1))
        << "round " << round << ":\n"
        << agent.activatedLog();
    const auto owner = agent.ownerProcess();
    ASSERT_TRUE(owner);
    ::kill(*owner, SIGTERM);
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
    const auto owner = agent.ownerProcess();
    ASSERT_TRUE(owner);
    ::kill(*owner, SIGTERM);
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

TEST_F(LinkToReport, BurstToASlowPortalArrivesWholeAndHoldsUpNoOtherPortal) {
  constexpr std::size_t kBurst = 1000;
  constexpr std::size_t kDescriptorBound = 400;
  TestPortal fast;
  portal.answerWith({.delay = std::chrono::milliseconds(200)});
  const auto process = agent.startAndWait();
  for (std::size_t i = 0; i < kBurst; ++i) {
    agent.openOnBus({link(std::to_string(i))});
  }
  agent.openOnBus({linkTo(fast.url(), "fast")});
  ASSERT_TRUE(fast.waitForRequests(1)) << process->err();
  EXPECT_LT(portal.requests().size(), kBurst) << "the fast portal had to wait for the slow one";
  EXPECT_LT(openDescriptors(process->pid()), kDescriptorBound);
  ASSERT_TRUE(portal.waitForRequests(kBurst, std::chrono::seconds(120)));
  EXPECT_LT(openDescriptors(process->pid()), kDescriptorBound);
  const std::multiset<std::string> sessions = arrivedSessions();
  EXPECT_EQ(std::set<std::string>(sessions.begin(), sessions.end()).size(), kBurst);
}

TEST_F(LinkToReport, SecondStartTouchesNeitherLoginItemsNorAssociations) {
  const auto entry = agent.home().config() / "autostart/com.brelto.vendril.desktop";
  const auto associations = agent.home().config() / "mimeapps.list";
  const auto first = agent.startAndWait();
  first->signal(SIGTERM);
  ASSERT_EQ(first->waitForExit(), 0) << first->err();
  const auto entryTime = std::filesystem::last_write_time(entry);
  const auto associationsTime = std::filesystem::last_write_time(associations);
  const auto second = agent.startAndWait();
  EXPECT_EQ(std::filesystem::last_write_time(entry), entryTime);
  EXPECT_EQ(std::filesystem::last_write_time(associations), associationsTime);
}

}  // namespace
}  // namespace vendril
