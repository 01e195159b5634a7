// The life of the application: its start, its end, and what its surroundings may do to it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string>
#include <vector>

#include "support/AgentTest.h"
#include "support/MainLoop.h"
#include "support/SilentBus.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ApplicationTest : public AgentTest {};

class TerminatingSignalTest : public AgentTest, public testing::WithParamInterface<int> {};

TEST_P(TerminatingSignalTest, EndsTheApplicationWithStatusZero) {
  const Process agent = startFirst();
  agent->signal(GetParam());
  EXPECT_EQ(agent->waitForExit(), 0);
  EXPECT_THAT(record(), ElementsAre("will", "did", "terminate"));
}

TEST_P(TerminatingSignalTest, EndsAnApplicationThatInheritedItIgnored) {
  ChildProcess shell({"sh", "-c", "trap '' HUP INT TERM; exec " + std::string(kProgram)});
  ASSERT_TRUE(waitForRecord("did"));
  shell.signal(GetParam());
  EXPECT_EQ(shell.waitForExit(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminatingSignalTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(ApplicationTest, TerminateBeforeTheLoopRunsEndsTheApplication) {
  const Process agent = start({"t:never"}, {{"TEST_AGENT_QUITS_AT_LAUNCH", "1"}});
  EXPECT_EQ(agent->waitForExit(), 0);
  EXPECT_THAT(record(), ElementsAre("will", "held t:never", "did", "terminate"));
}

TEST_F(ApplicationTest, LinkThatComesWhileTheNameIsGivenBackIsTakenBeforeTheApplicationEnds) {
  // The link arrives with the name, and is not looked at before the end.
  bus_.addService(kName, std::string("/usr/bin/env TEST_AGENT_QUITS_AT_LAUNCH=1 ") + kProgram);
  EXPECT_EQ(client_.open(kName, kPath, {"t:last"}), "");
  ASSERT_TRUE(waitForRecord("terminate"));
  EXPECT_THAT(record(), ElementsAre("will", "did", "held t:last", "terminate"));
}

TEST_F(ApplicationTest, TerminateWhileALinkIsHandledStillAnswersTheCaller) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.open(kName, kPath, {"t:quit", "t:after"}), "");
  EXPECT_EQ(agent->waitForExit(), 0);
  EXPECT_THAT(record(), ElementsAre("will", "did", "link t:quit", "link t:after", "terminate"));
}

TEST_F(ApplicationTest, GivesItsNameBackBeforeItEnds) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.ownerOf(kName), agent->pid());
  EXPECT_EQ(quit(*agent), 0);
  EXPECT_EQ(client_.ownerOf(kName), std::nullopt);
}

TEST_F(ApplicationTest, RunsWithoutASessionBusAndTakesItsLinks) {
  const Process agent =
      start({"t:one", "t:two"}, {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}});
  EXPECT_TRUE(agent->waitForErr("There is no session bus"));
  EXPECT_TRUE(waitForRecord("link t:two"));
  EXPECT_EQ(quit(*agent), 0);
  EXPECT_THAT(record(),
              ElementsAre("will", "held t:one", "did", "link t:one", "link t:two", "terminate"));
}

TEST_F(ApplicationTest, RunsWhenNothingNamesASessionBus) {
  const Process agent = start({}, {{"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                                   {"XDG_RUNTIME_DIR", (home_.root() / "empty").string()}});
  EXPECT_TRUE(agent->waitForErr("There is no session bus"));
  EXPECT_TRUE(waitForRecord("did"));
  EXPECT_EQ(quit(*agent), 0);
}

TEST_F(ApplicationTest, GivesUpABusThatNeverAnswers) {
  const SilentBus bus((home_.root() / "silent").string());
  const Process agent = start({"t:one"}, {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
  EXPECT_TRUE(waitForRecord("link t:one"));
  EXPECT_EQ(quit(*agent), 0);
  EXPECT_THAT(agent->err(), HasSubstr("The session bus does not answer"));
}

TEST_F(ApplicationTest, EndsWithTheBusAfterOneLine) {
  const Process agent = startFirst();
  bus_.stop();
  EXPECT_EQ(agent->waitForExit(), 0);
  EXPECT_THAT(record(), ElementsAre("will", "did", "terminate"));
  EXPECT_THAT(agent->err(), HasSubstr("The session bus has gone"));
  EXPECT_EQ(std::count(agent->err().begin(), agent->err().end(), '\n'), 1) << agent->err();
}

TEST_F(ApplicationTest, LaunchThatThrowsEndsTheProcessWithALineAndFreesTheName) {
  const Process agent = start({"t:throw"});
  EXPECT_EQ(agent->waitForExit(), 1);
  EXPECT_THAT(record(), ElementsAre("will", "held t:throw", "did", "link t:throw", "terminate"));
  EXPECT_THAT(agent->err(), HasSubstr("could not be launched:\n"));
  EXPECT_THAT(agent->err(), HasSubstr("thrown on demand\n"));
  EXPECT_EQ(client_.ownerOf(kName), std::nullopt);
}

TEST_F(ApplicationTest, EndsInTimeWhenTheBusHangs) {
  const Process agent = startFirst();
  bus_.signal(SIGSTOP);
  EXPECT_EQ(quit(*agent), 0);
  bus_.signal(SIGCONT);
}

TEST_F(ApplicationTest, OffersTheApplicationInterfaceAlone) {
  const Process agent = startFirst();
  const GVariantPtr reply(g_dbus_connection_call_sync(
      client_.connection(), kName, kPath, "org.freedesktop.DBus.Introspectable", "Introspect",
      nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  ASSERT_NE(reply, nullptr);
  const gchar* xml = nullptr;
  g_variant_get(reply.get(), "(&s)", &xml);
  for (const char* part : {"org.freedesktop.Application", "\"Open\"", "\"Activate\"",
                           "\"ActivateAction\"", "\"uris\""}) {
    EXPECT_THAT(xml, HasSubstr(part));
  }
}

TEST_F(ApplicationTest, ActivateAndActivateActionDoNothing) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.call(kName, kPath, "Activate", g_variant_new("(a{sv})", nullptr)), "");
  EXPECT_EQ(client_.call(kName, kPath, "ActivateAction",
                         g_variant_new("(sava{sv})", "quit", nullptr, nullptr)),
            "");
  EXPECT_EQ(client_.open(kName, kPath, {}), "");
  EXPECT_THAT(record(), ElementsAre("will", "did"));
}

TEST_F(ApplicationTest, RefusesMalformedCallsAndGoesOn) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.call(kName, kPath, "Open", g_variant_new("(s)", "t:bare")),
            "org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_EQ(client_.call(kName, kPath, "Explode", nullptr),
            "org.freedesktop.DBus.Error.UnknownMethod");
  EXPECT_EQ(client_.call(kName, "/elsewhere", "Open", openParameters({"t:x"})),
            "org.freedesktop.DBus.Error.UnknownMethod");
  EXPECT_EQ(client_.open(kName, kPath, {"t:good"}), "");
  EXPECT_THAT(handledLinks(), ElementsAre("t:good"));
}

TEST_F(ApplicationTest, OneLinkThatThrowsCostsNoOtherAnything) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.open(kName, kPath, {"t:a", "t:throw", "t:b"}), "");
  EXPECT_THAT(handledLinks(), ElementsAre("t:a", "t:throw", "t:b"));
  EXPECT_TRUE(agent->waitForErr("thrown on demand\n"));
}

/// How often all threads of a process together have gone to sleep so far.
long sleepsOf(pid_t pid) {
  constexpr std::string_view kField = "\nvoluntary_ctxt_switches:\t";
  const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
  long sum = 0;
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    const std::string status = readFile(task.path() / "status");
    const char* number = status.data() + status.find(kField) + kField.size();
    long count = 0;
    std::from_chars(number, status.data() + status.size(), count);
    sum += count;
  }
  return sum;
}

std::vector<std::string> threadNames(pid_t pid) {
  const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
  std::vector<std::string> names;
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    names.push_back(readFile(task.path() / "comm"));
  }
  return names;
}

TEST_F(ApplicationTest, KeepsNoThreadForWorkThatMayCome) {
  const Process agent = startFirst();
  EXPECT_TRUE(runMainLoopUntil(
      [&] {
        const std::vector<std::string> names = threadNames(agent->pid());
        return std::none_of(names.begin(), names.end(),
                            [](const std::string& name) { return name.starts_with("pool"); });
      },
      std::chrono::seconds(5)))
      << testing::PrintToString(threadNames(agent->pid()));
}

TEST_F(ApplicationTest, NeverWakesUpWhileNothingHappens) {
#ifdef VENDRIL_TSAN
  GTEST_SKIP() << "ThreadSanitizer has a thread of its own that wakes up";
#endif
  const Process agent = startFirst({"t:one"});
  const auto sleepsDuring = [&](std::chrono::milliseconds interval) {
    const long before = sleepsOf(agent->pid());
    EXPECT_EQ(agent->waitForExit(interval), std::nullopt);
    return sleepsOf(agent->pid()) - before;
  };
  ASSERT_GT(sleepsOf(agent->pid()), 0);
  // Memory is given back once there has been nothing to do for a second.
  const std::chrono::milliseconds quiet(1500);
  ASSERT_TRUE(runMainLoopUntil([&] { return sleepsDuring(quiet) == 0; }));
  EXPECT_EQ(sleepsDuring(quiet), 0);
}

}  // namespace
}  // namespace vendril
