// How links reach the one process of the session, whoever brings them and whenever.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>

#include "support/AgentTest.h"
#include "support/MainLoop.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr int kRounds = 50;

const std::vector<std::string>& oddLinks() {
  static const std::vector<std::string> kLinks{
      "t:join?a=1",
      "t:",
      "T:upper-case-scheme",
      "tT://HOST.Example:080/Path/../x//y/./?Q=%7E%7e#Fragment#",
      "t:%41%zz%",
      "t:///a//b/",
      "t:?portalURI=https%3A%2F%2Fp.example%2F%3Fsession_id%3D1%26x",
      "t:a+b c\ttab",
      "t:'\"\\$`&;|<>(){}[]*?!~",
      "t:\xC3\xA9\xE2\x82\xAC",
      "t:--help",
      "t:" + std::string(100'000, 'x')};
  return kLinks;
}

const std::vector<std::string>& otherArguments() {
  static const std::vector<std::string> kOthers{"--help",    "-h",   "--gapplication-service",
                                                "--version", "-t:x", "--",
                                                "word",      "",     ":t",
                                                "t",         "x:y",  "ttt:x",
                                                " t:x",      "-",    "%u"};
  return kOthers;
}

std::vector<std::string> mixed() {
  std::vector<std::string> arguments = otherArguments();
  arguments.insert(arguments.end(), oddLinks().begin(), oddLinks().end());
  arguments.insert(arguments.end(), otherArguments().begin(), otherArguments().end());
  return arguments;
}

class HandoverTest : public AgentTest {
 protected:
  /// An agent that the bus has started is nobody's child, so a test that fails would leave it.
  void TearDown() override {
    if (const auto owner = client_.ownerOf(kName)) {
      ::kill(*owner, SIGKILL);
    }
  }

  /// Waits until the process that owns the agent's name, if any, has ended.
  void endOwner() const {
    if (const auto owner = client_.ownerOf(kName)) {
      ::kill(*owner, SIGTERM);
    }
    ASSERT_TRUE(runMainLoopUntil([this] { return !client_.ownerOf(kName); }));
  }
};

TEST_F(HandoverTest, ArgumentsOfTheFirstProcessArriveByteForByte) {
  const Process agent = start(mixed());
  ASSERT_TRUE(waitForRecord("link " + oddLinks().back()));
  EXPECT_THAT(handledLinks(), ElementsAreArray(oddLinks()));
  EXPECT_EQ(record().at(1), "held " + oddLinks().front());
}

TEST_F(HandoverTest, ArgumentsOfASecondProcessArriveByteForByte) {
  const Process first = startFirst();
  const Process second = start(mixed());
  EXPECT_EQ(second->waitForExit(), 0);
  EXPECT_THAT(handledLinks(), ElementsAreArray(oddLinks()));
  EXPECT_EQ(second->err() + second->out(), "");
}

TEST_F(HandoverTest, LinksFromTheBusArriveByteForByte) {
  const Process agent = startFirst();
  EXPECT_EQ(client_.open(kName, kPath, oddLinks()), "");
  EXPECT_THAT(handledLinks(), ElementsAreArray(oddLinks()));
}

TEST_F(HandoverTest, HugeLinkAndVeryManyLinksArrive) {
  const Process agent = startFirst();
  std::vector<std::string> links{"t:" + std::string(1'000'000, 'y')};
  for (int i = 0; i < 10'000; ++i) {
    links.push_back("t:" + std::to_string(i));
  }
  EXPECT_EQ(client_.open(kName, kPath, links), "");
  EXPECT_TRUE(handledLinks() == links);
}

TEST_F(HandoverTest, LinkThatIsNotUtf8StillReachesTheFirstProcess) {
  const Process first = startFirst();
  const Process second = start({"t:\xFF!"});
  EXPECT_EQ(second->waitForExit(), 0);
  EXPECT_THAT(handledLinks(), ElementsAre("t:\xEF\xBF\xBD!"));
}

TEST_F(HandoverTest, SecondProcessWithoutLinksEndsAtOnceAndCallsNoDelegate) {
  const Process first = startFirst();
  const Process second = start({"--help"});
  EXPECT_EQ(second->waitForExit(), 0);
  EXPECT_THAT(record(), ElementsAre("will", "did"));
}

TEST_F(HandoverTest, SecondProcessAnswersForLinksThatHaveBeenHandled) {
  const Process first = startFirst();
  for (int round = 0; round < 10; ++round) {
    const std::string link = "t:" + std::to_string(round);
    const Process second = start({link});
    ASSERT_EQ(second->waitForExit(), 0);
    ASSERT_EQ(handledLinks().back(), link);
  }
}

TEST_F(HandoverTest, StoppedFirstProcessMakesTheSecondFailInTime) {
  const Process first = startFirst();
  first->signal(SIGSTOP);
  const auto begin = std::chrono::steady_clock::now();
  const Process second = start({"t:x"});
  EXPECT_EQ(second->waitForExit(), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8));
  EXPECT_THAT(second->err(), HasSubstr("The running process does not answer\n"));
}

TEST_F(HandoverTest, FirstProcessThatDiesUnansweredIsSucceededByTheSecond) {
  const Process first = startFirst();
  first->signal(SIGSTOP);
  const Process second = start({"t:x"});
  // The name has been found taken when the second process has a connection; its call then waits.
  ASSERT_TRUE(runMainLoopUntil([&] { return client_.connectionCount() == 3; }));
  first->signal(SIGKILL);
  EXPECT_TRUE(waitForRecord("link t:x"));
  EXPECT_EQ(client_.ownerOf(kName), second->pid());
  EXPECT_EQ(quit(*second), 0);
}

TEST_F(HandoverTest, OfTwoFirstProcessesAtOnceNeitherLosesItsLink) {
  for (int round = 0; round < kRounds; ++round) {
    clearRecord();
    const Process one = start({"t:one"});
    const Process two = start({"t:two"});
    ASSERT_TRUE(runMainLoopUntil([this] { return handledLinks().size() >= 2; }))
        << "round " << round << " handled " << testing::PrintToString(record());
    ASSERT_THAT(handledLinks(), UnorderedElementsAre("t:one", "t:two"));
    const bool oneIsFirst = client_.ownerOf(kName) == one->pid();
    ASSERT_EQ((oneIsFirst ? two : one)->waitForExit(), 0);
    ASSERT_EQ(quit(oneIsFirst ? *one : *two), 0);
  }
}

TEST_F(HandoverTest, LinkThatMakesTheBusStartTheApplicationIsHandled) {
  bus_.addService(kName, kProgram);
  for (int round = 0; round < kRounds; ++round) {
    const std::string link = "t:" + std::to_string(round);
    ASSERT_EQ(client_.open(kName, kPath, {link}), "") << "round " << round;
    ASSERT_EQ(handledLinks().back(), link);
    endOwner();
  }
  EXPECT_EQ(handledLinks().size(), kRounds);
}

TEST_F(HandoverTest, SecondProcessThatMeetsTheEndOfTheFirstLosesNoLink) {
  for (int round = 0; round < kRounds; ++round) {
    clearRecord();
    const Process first = startFirst();
    const Process second = start({"t:late"});
    first->signal(SIGTERM);
    ASSERT_TRUE(waitForRecord("link t:late")) << "round " << round;
    ASSERT_EQ(first->waitForExit(), 0);
    endOwner();
    ASSERT_EQ(second->waitForExit(), 0);
    ASSERT_THAT(handledLinks(), ElementsAre("t:late"));
  }
}

TEST_F(HandoverTest, LinkFromTheBusThatMeetsTheEndOfTheApplicationIsNotLost) {
  bus_.addService(kName, kProgram);
  for (int round = 0; round < kRounds; ++round) {
    clearRecord();
    const Process first = startFirst();
    first->signal(SIGTERM);
    ASSERT_EQ(client_.open(kName, kPath, {"t:late"}), "") << "round " << round;
    ASSERT_THAT(handledLinks(), ElementsAre("t:late"));
    ASSERT_EQ(first->waitForExit(), 0);
    endOwner();
  }
}

}  // namespace
}  // namespace vendril
