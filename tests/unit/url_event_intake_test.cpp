#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "protocol/ZQN5ProtocolHandler.h"
#include "support/FakeHost.h"
#include "support/FreshProtocolHandler.h"

namespace vendril {
namespace {

using std::chrono::hours;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFirst = "vendril://open?portalURI=https://one.example";
constexpr const char* kSecond = "mervale://open?portalURI=https://two.example";

const std::vector<std::optional<std::string>> kUndecodable{
    std::nullopt, "", "vendril://a b", "vendril://caf\xC3\xA9", "vendril://[", "vendril:\n"};

/// A new handler whose log also shows when its blocks run.
class UrlEventIntake : public testing::Test {
 protected:
  UrlEventIntake() {
    handler_.setLoggerBlock([this](std::string_view message) { log_.emplace_back(message); });
    handler_.setEventBlock([this](const Url& url, std::optional<Date> date) {
      log_.push_back("<event block " + url.absoluteString() + ">");
      eventDates_.push_back(date);
    });
    handler_.setBufferBlock(
        [this](const Url& url) { log_.push_back("<buffer block " + url.absoluteString() + ">"); });
  }

  void deliver(const std::optional<std::string>& link) { host_.fakeUrlEvents.deliver(link); }

  void expectBuffer(const std::optional<std::string>& url, const std::optional<Date>& date) const {
    EXPECT_EQ(handler_.bufferURL(), url ? Url::parse(*url) : std::nullopt);
    EXPECT_EQ(handler_.bufferDate(), date);
  }

  /// The messages and blocks since the last call.
  std::vector<std::string> takeLog() { return std::exchange(log_, {}); }

  void startRunning() {
    handler_.start();
    log_.clear();
  }

  FakeHost host_;
  FreshProtocolHandler fresh_;
  ZQN5ProtocolHandler& handler_ = ZQN5ProtocolHandler::sharedInstance();
  const Date firstDate_ = host_.fakeProcessInfo.now;
  std::vector<std::string> log_;
  std::vector<std::optional<Date>> eventDates_;
};

TEST_F(UrlEventIntake, IsCreatedPausedAndEmpty) {
  fresh_.rebuild();
  EXPECT_TRUE(handler_.isPaused());
  EXPECT_FALSE(handler_.bufferBlock());
  EXPECT_FALSE(handler_.eventBlock());
  EXPECT_FALSE(handler_.loggerBlock());
  expectBuffer(std::nullopt, std::nullopt);
}

TEST_F(UrlEventIntake, CreationRegistersGetUrlThenOpenUrl) {
  using Kind = FakeUrlEvents::Kind;
  EXPECT_THAT(host_.fakeUrlEvents.registrations,
              ElementsAre(Kind{0x4755524C, 0x4755524C}, Kind{0x57575721, 0x4F55524C}));
}

TEST_F(UrlEventIntake, SharedInstanceIsCreatedOnce) {
  EXPECT_EQ(&ZQN5ProtocolHandler::sharedInstance(), &ZQN5ProtocolHandler::sharedInstance());
  EXPECT_EQ(host_.fakeUrlEvents.registrations.size(), 2U);
}

TEST_F(UrlEventIntake, CreationReadsTheDeclaredSchemesOnce) {
  EXPECT_THAT(handler_.supportedURLSchemes(), ElementsAre("mervale", "vendril"));
  host_.fakeBundle.info.erase("CFBundleURLTypes");
  EXPECT_THAT(handler_.supportedURLSchemes(), ElementsAre("mervale", "vendril"));
}

TEST_F(UrlEventIntake, LinkIsBufferedWhilePaused) {
  deliver(kFirst);
  EXPECT_THAT(takeLog(),
              ElementsAre("New URL received: 'vendril://open?portalURI=https://one.example'",
                          "Saving URL to buffer: 'vendril://open?portalURI=https://one.example'",
                          "<buffer block vendril://open?portalURI=https://one.example>"));
  expectBuffer(kFirst, firstDate_);
  EXPECT_TRUE(handler_.isPaused());
}

TEST_F(UrlEventIntake, BufferIsSetBeforeTheBufferBlockRuns) {
  std::optional<Url> seen;
  handler_.setBufferBlock([this, &seen](const Url&) { seen = handler_.bufferURL(); });
  deliver(kFirst);
  EXPECT_EQ(seen, Url::parse(kFirst));
}

TEST_F(UrlEventIntake, LaterLinkReplacesTheBufferedOneWithoutAWord) {
  deliver(kFirst);
  takeLog();
  host_.fakeProcessInfo.now += hours(1);
  deliver(kSecond);
  EXPECT_THAT(takeLog(),
              ElementsAre("New URL received: 'mervale://open?portalURI=https://two.example'",
                          "Saving URL to buffer: 'mervale://open?portalURI=https://two.example'",
                          "<buffer block mervale://open?portalURI=https://two.example>"));
  expectBuffer(kSecond, firstDate_ + hours(1));
  EXPECT_TRUE(handler_.isPaused());
}

TEST_F(UrlEventIntake, UndecodableEventWhilePausedLeavesTheEmptyBufferAsItIs) {
  for (const auto& link : kUndecodable) {
    SCOPED_TRACE(link.value_or("no direct object"));
    deliver(link);
    EXPECT_THAT(takeLog(), ElementsAre("Failed to decode URL from event descriptor"));
    expectBuffer(std::nullopt, std::nullopt);
    EXPECT_TRUE(handler_.isPaused());
  }
}

TEST_F(UrlEventIntake, UndecodableEventWhilePausedKeepsTheBufferedLink) {
  deliver(kFirst);
  takeLog();
  host_.fakeProcessInfo.now += hours(1);
  for (const auto& link : kUndecodable) {
    SCOPED_TRACE(link.value_or("no direct object"));
    deliver(link);
    EXPECT_THAT(takeLog(), ElementsAre("Failed to decode URL from event descriptor"));
    expectBuffer(kFirst, firstDate_);
    EXPECT_TRUE(handler_.isPaused());
  }
}

TEST_F(UrlEventIntake, UndecodableEventWhileRunningIsDropped) {
  startRunning();
  for (const auto& link : kUndecodable) {
    SCOPED_TRACE(link.value_or("no direct object"));
    deliver(link);
    EXPECT_THAT(takeLog(), ElementsAre("Failed to decode URL from event descriptor"));
    expectBuffer(std::nullopt, std::nullopt);
    EXPECT_FALSE(handler_.isPaused());
  }
}

TEST_F(UrlEventIntake, StartWithAnEmptyBufferAnswersFalse) {
  EXPECT_FALSE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Started", "There is no URL buffered"));
  EXPECT_FALSE(handler_.isPaused());
}

TEST_F(UrlEventIntake, StartReplaysTheBufferedLinkWithTheDateOfItsArrival) {
  deliver(kFirst);
  takeLog();
  host_.fakeProcessInfo.now += hours(1);
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Started",
                  "Loading URL from buffer: 'vendril://open?portalURI=https://one.example'",
                  "Executing event block with URL: 'vendril://open?portalURI=https://one.example' "
                  "Original date: 2024-01-31 13:05:09 +0000",
                  "<event block vendril://open?portalURI=https://one.example>", "Clearing buffer"));
  EXPECT_THAT(eventDates_, ElementsAre(firstDate_));
  expectBuffer(std::nullopt, std::nullopt);
  EXPECT_FALSE(handler_.isPaused());
}

TEST_F(UrlEventIntake, OnlyTheSecondOfTwoBufferedLinksIsReplayedWithItsOwnDate) {
  deliver(kFirst);
  host_.fakeProcessInfo.now += hours(1);
  deliver(kSecond);
  takeLog();
  host_.fakeProcessInfo.now += hours(1);
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Started",
                  "Loading URL from buffer: 'mervale://open?portalURI=https://two.example'",
                  "Executing event block with URL: 'mervale://open?portalURI=https://two.example' "
                  "Original date: 2024-01-31 14:05:09 +0000",
                  "<event block mervale://open?portalURI=https://two.example>", "Clearing buffer"));
  EXPECT_THAT(eventDates_, ElementsAre(firstDate_ + hours(1)));
}

TEST_F(UrlEventIntake, ReplayedLinkIsNotReplayedAgain) {
  deliver(kFirst);
  handler_.start();
  handler_.pause();
  takeLog();
  EXPECT_FALSE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Started", "There is no URL buffered"));
}

TEST_F(UrlEventIntake, BufferIsFullAndIntakeRunsWhileTheReplayedLinkIsHandled) {
  deliver(kFirst);
  std::optional<Url> seen;
  std::optional<bool> paused;
  handler_.setEventBlock([&](const Url&, std::optional<Date>) {
    seen = handler_.bufferURL();
    paused = handler_.isPaused();
  });
  handler_.start();
  EXPECT_EQ(seen, Url::parse(kFirst));
  EXPECT_EQ(paused, false);
}

TEST_F(UrlEventIntake, StartWithoutAnEventBlockStillLogsAndClearsTheBuffer) {
  handler_.setEventBlock({});
  deliver(kFirst);
  takeLog();
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(
      takeLog(),
      ElementsAre("Started",
                  "Loading URL from buffer: 'vendril://open?portalURI=https://one.example'",
                  "Executing event block with URL: 'vendril://open?portalURI=https://one.example' "
                  "Original date: 2024-01-31 13:05:09 +0000",
                  "Clearing buffer"));
  expectBuffer(std::nullopt, std::nullopt);
}

TEST_F(UrlEventIntake, SecondStartWarnsAndAnswersFalse) {
  startRunning();
  EXPECT_FALSE(handler_.start());
  EXPECT_THAT(takeLog(),
              ElementsAre("WARNING: Trying to start ProtocolHandler when it's not paused!"));
  EXPECT_FALSE(handler_.isPaused());
}

TEST_F(UrlEventIntake, StartWhileRunningDoesNotReplayALinkPutIntoTheBuffer) {
  startRunning();
  handler_.setBufferURL(Url::parse(kFirst));
  EXPECT_FALSE(handler_.start());
  EXPECT_THAT(takeLog(),
              ElementsAre("WARNING: Trying to start ProtocolHandler when it's not paused!"));
  EXPECT_EQ(handler_.bufferURL(), Url::parse(kFirst));
}

TEST_F(UrlEventIntake, LinkWhileRunningIsHandedOnWithAFreshDateAndNeverBuffered) {
  startRunning();
  host_.fakeProcessInfo.now += hours(2);
  deliver(kFirst);
  EXPECT_THAT(
      takeLog(),
      ElementsAre("New URL received: 'vendril://open?portalURI=https://one.example'",
                  "Executing event block with URL: 'vendril://open?portalURI=https://one.example'",
                  "<event block vendril://open?portalURI=https://one.example>"));
  EXPECT_THAT(eventDates_, ElementsAre(firstDate_ + hours(2)));
  expectBuffer(std::nullopt, std::nullopt);
  EXPECT_FALSE(handler_.isPaused());
}

TEST_F(UrlEventIntake, LinkWhileRunningWithoutAnEventBlockIsOnlyLogged) {
  startRunning();
  handler_.setEventBlock({});
  deliver("vendril:x");
  EXPECT_THAT(takeLog(), ElementsAre("New URL received: 'vendril:x'",
                                     "Executing event block with URL: 'vendril:x'"));
  expectBuffer(std::nullopt, std::nullopt);
}

TEST_F(UrlEventIntake, OpenUrlEventIsTakenInLikeAGetUrlEvent) {
  startRunning();
  EXPECT_TRUE(host_.fakeUrlEvents.deliver("vendril:x", {0x57575721, 0x4F55524C}));
  EXPECT_THAT(takeLog(), ElementsAre("New URL received: 'vendril:x'",
                                     "Executing event block with URL: 'vendril:x'",
                                     "<event block vendril:x>"));
}

TEST_F(UrlEventIntake, LinkIsHandedOnByteForByte) {
  startRunning();
  deliver("VenDril:%zz%2f/../?A=%E4%F6&&#f");
  EXPECT_THAT(takeLog(), ElementsAre("New URL received: 'VenDril:%zz%2f/../?A=%E4%F6&&#f'",
                                     "Executing event block with URL: "
                                     "'VenDril:%zz%2f/../?A=%E4%F6&&#f'",
                                     "<event block VenDril:%zz%2f/../?A=%E4%F6&&#f>"));
}

TEST_F(UrlEventIntake, ReplyEventIsNotUsed) {
  startRunning();
  UrlEvent reply{"untouched"};
  handler_.getUrl(UrlEvent{"vendril:x"}, reply);
  EXPECT_EQ(reply.directObject, "untouched");
  EXPECT_EQ(takeLog().size(), 3U);
}

TEST_F(UrlEventIntake, PauseWhileRunningIsLogged) {
  startRunning();
  handler_.pause();
  EXPECT_THAT(takeLog(), ElementsAre("Paused"));
  EXPECT_TRUE(handler_.isPaused());
  expectBuffer(std::nullopt, std::nullopt);
}

TEST_F(UrlEventIntake, PauseWhilePausedDoesNothing) {
  handler_.pause();
  EXPECT_THAT(takeLog(), IsEmpty());
  EXPECT_TRUE(handler_.isPaused());
}

TEST_F(UrlEventIntake, PauseWhilePausedKeepsTheBufferedLink) {
  deliver(kFirst);
  takeLog();
  handler_.pause();
  EXPECT_THAT(takeLog(), IsEmpty());
  EXPECT_TRUE(handler_.isPaused());
  expectBuffer(kFirst, firstDate_);
}

TEST_F(UrlEventIntake, PauseThenStartWithoutANewLinkReplaysNothing) {
  startRunning();
  handler_.pause();
  EXPECT_FALSE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Paused", "Started", "There is no URL buffered"));
}

TEST_F(UrlEventIntake, LinkAfterPauseIsBufferedAgain) {
  startRunning();
  handler_.pause();
  takeLog();
  deliver("vendril:x");
  EXPECT_THAT(takeLog(),
              ElementsAre("New URL received: 'vendril:x'", "Saving URL to buffer: 'vendril:x'",
                          "<buffer block vendril:x>"));
  expectBuffer("vendril:x", firstDate_);
}

TEST_F(UrlEventIntake, ResetClearsTheBufferWithoutAMessageAndStaysPaused) {
  deliver(kFirst);
  takeLog();
  handler_.resetBufferURL();
  EXPECT_THAT(takeLog(), IsEmpty());
  expectBuffer(std::nullopt, std::nullopt);
  EXPECT_TRUE(handler_.isPaused());
  EXPECT_FALSE(handler_.start());
}

TEST_F(UrlEventIntake, ResetWhileRunningGoesOnRunning) {
  startRunning();
  handler_.resetBufferURL();
  EXPECT_THAT(takeLog(), IsEmpty());
  EXPECT_FALSE(handler_.isPaused());
}

TEST_F(UrlEventIntake, WithoutABufferBlockALinkIsBufferedAllTheSame) {
  handler_.setBufferBlock({});
  deliver("vendril:x");
  EXPECT_THAT(takeLog(),
              ElementsAre("New URL received: 'vendril:x'", "Saving URL to buffer: 'vendril:x'"));
  expectBuffer("vendril:x", firstDate_);
}

TEST_F(UrlEventIntake, WithoutALoggerBlockEverythingElseHappens) {
  handler_.setLoggerBlock({});
  deliver(std::nullopt);
  deliver(kFirst);
  EXPECT_TRUE(handler_.start());
  EXPECT_FALSE(handler_.start());
  deliver(kSecond);
  handler_.pause();
  EXPECT_TRUE(handler_.isPaused());
  EXPECT_THAT(takeLog(), ElementsAre("<buffer block vendril://open?portalURI=https://one.example>",
                                     "<event block vendril://open?portalURI=https://one.example>",
                                     "<event block mervale://open?portalURI=https://two.example>"));
}

TEST_F(UrlEventIntake, BufferFieldsCanBeSetFromOutside) {
  handler_.setBufferURL(Url::parse("vendril:x"));
  handler_.setBufferDate(firstDate_ - hours(24));
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Started", "Loading URL from buffer: 'vendril:x'",
                                     "Executing event block with URL: 'vendril:x' Original date: "
                                     "2024-01-30 13:05:09 +0000",
                                     "<event block vendril:x>", "Clearing buffer"));
  EXPECT_THAT(eventDates_, ElementsAre(firstDate_ - hours(24)));
}

TEST_F(UrlEventIntake, BufferedLinkWithoutADateIsReplayedWithoutOne) {
  handler_.setBufferURL(Url::parse("vendril:x"));
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Started", "Loading URL from buffer: 'vendril:x'",
                                     "Executing event block with URL: 'vendril:x' Original date: "
                                     "(null)",
                                     "<event block vendril:x>", "Clearing buffer"));
  EXPECT_THAT(eventDates_, ElementsAre(std::nullopt));
}

TEST_F(UrlEventIntake, LinkThatArrivesDuringTheReplayIsHandedOnAtOnce) {
  deliver("vendril:x");
  takeLog();
  handler_.setEventBlock([this](const Url& url, std::optional<Date>) {
    log_.push_back("<event block " + url.absoluteString() + ">");
    if (url.absoluteString() == "vendril:x") {
      deliver("vendril:y");
    }
  });
  EXPECT_TRUE(handler_.start());
  EXPECT_THAT(takeLog(), ElementsAre("Started", "Loading URL from buffer: 'vendril:x'",
                                     "Executing event block with URL: 'vendril:x' Original date: "
                                     "2024-01-31 13:05:09 +0000",
                                     "<event block vendril:x>", "New URL received: 'vendril:y'",
                                     "Executing event block with URL: 'vendril:y'",
                                     "<event block vendril:y>", "Clearing buffer"));
}

TEST_F(UrlEventIntake, EventBlockMayClearTheBufferAndReplaceItself) {
  deliver("vendril:x");
  std::string seen;
  handler_.setEventBlock(
      [this, &seen, note = std::string("noted ")](const Url& url, std::optional<Date>) {
        handler_.resetBufferURL();
        handler_.setEventBlock({});
        seen = note + url.absoluteString();
      });
  EXPECT_TRUE(handler_.start());
  EXPECT_EQ(seen, "noted vendril:x");
  EXPECT_FALSE(handler_.eventBlock());
}

TEST_F(UrlEventIntake, BufferBlockMayReplaceItself) {
  std::string seen;
  handler_.setBufferBlock([this, &seen, note = std::string("noted ")](const Url& url) {
    handler_.setBufferBlock({});
    seen = note + url.absoluteString();
  });
  deliver("vendril:x");
  EXPECT_EQ(seen, "noted vendril:x");
  EXPECT_FALSE(handler_.bufferBlock());
}

}  // namespace
}  // namespace vendril
