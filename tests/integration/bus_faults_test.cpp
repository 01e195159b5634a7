// A bus that goes away, comes back, or does not answer, and the links that come meanwhile.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <optional>

#include "support/AgentTest.h"
#include "support/MainLoop.h"
#include "support/ScriptedBus.h"

namespace vendril {
namespace {

using testing::ElementsAre;

/// Agents that a bus has started are nobody's children, but they end with it.
class BusFaults : public AgentTest {
 protected:
  void restartBus() {
    bus_.stop();
    bus_.start();
  }
};

TEST_F(BusFaults, LinksBeforeAndAfterARestartOfTheBusAreHandled) {
  constexpr int kRounds = 10;
  bus_.addService(kName, kProgram);
  for (int round = 0; round < kRounds; ++round) {
    const std::string link = "t:" + std::to_string(round);
    ASSERT_EQ(BusClient(bus_.address()).open(kName, kPath, {link}), "");
    ASSERT_EQ(handledLinks().back(), link);
    restartBus();
  }
  EXPECT_EQ(handledLinks().size(), std::size_t{kRounds});
}

TEST_F(BusFaults, AgentOfTheOldBusEndsAndTheNewBusStartsAnother) {
  bus_.addService(kName, kProgram);
  const Process old = startFirst();
  restartBus();
  EXPECT_EQ(old->waitForExit(), 0) << old->err();
  const BusClient client(bus_.address());
  EXPECT_EQ(client.open(kName, kPath, {"t:after"}), "");
  EXPECT_TRUE(client.ownerOf(kName));
  EXPECT_THAT(handledLinks(), ElementsAre("t:after"));
}

TEST_F(BusFaults, LinksThatCameBeforeTheEndOfTheBusAreHandled) {
  const Process agent = startFirst();
  agent->signal(SIGSTOP);
  for (const char* link : {"t:1", "t:2", "t:3"}) {
    g_dbus_connection_call(client_.connection(), kName, kPath, "org.freedesktop.Application",
                           "Open", openParameters({link}), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                           nullptr, nullptr, nullptr);
  }
  // The bus has passed on what came before a question that it has answered.
  ASSERT_TRUE(client_.ownerOf(kName));
  bus_.stop();
  agent->signal(SIGCONT);
  EXPECT_EQ(agent->waitForExit(), 0);
  EXPECT_THAT(handledLinks(), ElementsAre("t:1", "t:2", "t:3"));
}

TEST_F(BusFaults, SecondProcessThatLosesTheBusHandlesItsLinksItself) {
  const Process first = startFirst();
  first->signal(SIGSTOP);
  const Process second = start({"t:x", "t:y"});
  ASSERT_TRUE(runMainLoopUntil([&] { return client_.connectionCount() == 3; }));
  bus_.stop();
  EXPECT_EQ(second->waitForExit(), 0);
  EXPECT_THAT(handledLinks(), ElementsAre("t:x", "t:y"));
}

TEST_F(BusFaults, SecondProcessGivesALaterQuestionOnlyTheTimeThatIsLeft) {
  constexpr std::chrono::seconds kMostOfTheLimit{4};
  ScriptedBus bus((home_.root() / "scripted").string());
  const Process agent = start({"t:x"}, {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
  ASSERT_TRUE(runMainLoopUntil([&] { return bus.hasCall(); })) << agent->err();
  ASSERT_EQ(agent->waitForExit(kMostOfTheLimit), std::nullopt) << agent->err();
  bus.answerThatOwnerHasGone();
  const auto answered = std::chrono::steady_clock::now();
  EXPECT_TRUE(waitForRecord("link t:x")) << "the bus that does not answer counts as none";
  EXPECT_LT(std::chrono::steady_clock::now() - answered, kMostOfTheLimit);
  EXPECT_EQ(bus.nameRequests(), 2);
}

}  // namespace
}  // namespace vendril
