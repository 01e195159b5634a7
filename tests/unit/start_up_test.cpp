#include <algorithm>
#include <iterator>

#include "support/DelegateFixture.h"

namespace vendril {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kLink = "vendril:join?portalURI=http%3A%2F%2F127.0.0.1%2Fp%3Fsession_id%3D7";

class StartUp : public DelegateFixture {
 protected:
  void giveArguments(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
      host.fakeProcessInfo.argumentList.push_back(word);
    }
  }
  void unregisterSchemes() { host.fakeLaunchServices.defaults.clear(); }
  void removeLoginItem() { host.fakeSessionLoginItems.items.clear(); }

  /// What the messages that mark the way from the launch to the request begin with, as they came.
  std::vector<std::string> milestones() {
    const std::vector<std::string> beginnings{"[ZQN5VendrilAppDelegate] Successfully added",
                                              "[ZQN5VendrilAppDelegate] Successfully registered",
                                              "Started",
                                              "Loading URL from buffer",
                                              "[ZQN5VendrilAppDelegate] Process details",
                                              "[ZQN5VendrilAppDelegate] Sending POST request"};
    std::vector<std::string> found;
    for (const std::string& message : host.fakeSystemLog.take()) {
      std::copy_if(beginnings.begin(), beginnings.end(), std::back_inserter(found),
                   [&message](const std::string& text) { return message.starts_with(text); });
    }
    return found;
  }
};

TEST_F(StartUp, WillFinishLaunchingFillsTheState) {
  delegate->applicationWillFinishLaunching();
  EXPECT_EQ(delegate->startTime(), host.fakeProcessInfo.now);
  EXPECT_NE(delegate->logger(), nullptr);
  EXPECT_NE(delegate->configuration(), nullptr);
  EXPECT_TRUE(delegate->searchForBreltoOrvanta());
  EXPECT_TRUE(delegate->protocolHandler().isPaused());
  EXPECT_FALSE(delegate->protocolHandler().bufferBlock());
  ASSERT_EQ(host.operationQueues.size(), 1U);
  EXPECT_EQ(delegate->operationQueue(), host.operationQueues.front());
}

TEST_F(StartUp, AllowedCharactersAreThoseOfAPathWithoutAmpersandPlusAndEquals) {
  delegate->applicationWillFinishLaunching();
  std::string allowed;
  for (char character = 1; character > 0 && character < 127; ++character) {
    if (delegate->allowedCharacters().contains(character)) {
      allowed += character;
    }
  }
  EXPECT_EQ(allowed,
            "!$'()*,-./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
}

TEST_F(StartUp, WithoutArgumentsAddsTheLoginItemSearchesAndRegisters) {
  removeLoginItem();
  unregisterSchemes();
  delegate->applicationWillFinishLaunching();
  host.fakeSystemLog.take();
  delegate->applicationDidFinishLaunching();
  EXPECT_TRUE(delegate->launchOnLogin());
  EXPECT_TRUE(delegate->searchForBreltoOrvanta());
  EXPECT_EQ(host.fakeLaunchServices.defaults,
            (decltype(host.fakeLaunchServices.defaults){{"mervale", "com.brelto.vendril"},
                                                        {"vendril", "com.brelto.vendril"}}));
  EXPECT_THAT(
      host.fakeSystemLog.take(),
      ElementsAre(
          "[ZQN5VendrilAppDelegate] Application is not added to login items",
          "[ZQN5VendrilAppDelegate] clean: searching for auto start item to be removed in array "
          "with '0' items.",
          "[ZQN5VendrilAppDelegate] setting launch on login to '1'",
          "[ZQN5VendrilAppDelegate] bundle URL is 'file:///opt/vendril/bin/vendril'",
          "[ZQN5VendrilAppDelegate] releasing item reference after inserting auto start item. "
          "Cosidering this as a success.",
          "[ZQN5VendrilAppDelegate] Successfully added application to login items",
          "[ZQN5VendrilAppDelegate] Application is not registered for all supported protocol "
          "schemes",
          "Registering for 'mervale' scheme", "Successfully registered for 'mervale' scheme",
          "Registering for 'vendril' scheme", "Successfully registered for 'vendril' scheme",
          "[ZQN5VendrilAppDelegate] Successfully registered for supported protocol schemes",
          "Started", "There is no URL buffered"));
}

TEST_F(StartUp, ReadyInstallationLogsNothingButTheStart) {
  delegate->applicationWillFinishLaunching();
  host.fakeSystemLog.take();
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(host.fakeSystemLog.take(), ElementsAre("Started", "There is no URL buffered"));
  EXPECT_EQ(host.fakeLaunchServices.setCount(), 0);
}

TEST_F(StartUp, WordWithDashesIsNotRecognisedAndTheLoginItemIsAdded) {
  removeLoginItem();
  giveArguments({"--dont-add-to-login-items", "-dont-search-for-brelto-orvanta"});
  launch();
  EXPECT_TRUE(delegate->launchOnLogin());
  EXPECT_TRUE(delegate->searchForBreltoOrvanta());
}

TEST_F(StartUp, WordsAreComparedWholeAndCaseSensitively) {
  removeLoginItem();
  giveArguments({"Dont-add-to-login-items", "dont-add-to-login-item", "dont-add-to-login-items "});
  launch();
  EXPECT_TRUE(delegate->launchOnLogin());
}

TEST_F(StartUp, DontAddToLoginItemsLogsOneMessageAndLeavesTheLoginItemsAlone) {
  removeLoginItem();
  host.fakeSessionLoginItems.add("Brelto Orvanta", "/opt/old/orvanta");
  giveArguments({"dont-add-to-login-items"});
  delegate->applicationWillFinishLaunching();
  host.fakeSystemLog.take();
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(delegateMessages(), ElementsAre("Application will not be added to login items"));
  EXPECT_THAT(host.fakeSessionLoginItems.history, IsEmpty());
  EXPECT_EQ(host.fakeSessionLoginItems.items.size(), 1U);
}

TEST_F(StartUp, DontSearchWordTurnsTheSearchOff) {
  giveArguments({"dont-search-for-brelto-orvanta", "dont-search-for-brelto-orvanta"});
  launch();
  EXPECT_FALSE(delegate->searchForBreltoOrvanta());
}

TEST_F(StartUp, EachWordLeavesTheOthersMatterAlone) {
  removeLoginItem();
  giveArguments({"dont-search-for-brelto-orvanta"});
  launch();
  EXPECT_TRUE(delegate->launchOnLogin());
  removeLoginItem();
  host.fakeProcessInfo.argumentList.back() = "dont-add-to-login-items";
  launch();
  EXPECT_FALSE(delegate->launchOnLogin());
  EXPECT_TRUE(delegate->searchForBreltoOrvanta());
}

TEST_F(StartUp, ExecutablePathItselfIsReadAsAWordToo) {
  host.fakeProcessInfo.argumentList = {"dont-search-for-brelto-orvanta"};
  launch();
  EXPECT_FALSE(delegate->searchForBreltoOrvanta());
}

TEST_F(StartUp, ExistingLoginItemMeansNoMessageAndNoCleanup) {
  host.fakeSessionLoginItems.add("Brelto Mervale", "/opt/old/mervale");
  delegate->applicationWillFinishLaunching();
  host.fakeSystemLog.take();
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(delegateMessages(), IsEmpty());
  EXPECT_EQ(host.fakeSessionLoginItems.items.size(), 2U);
}

TEST_F(StartUp, FailedInsertionIsLoggedAndStartUpGoesOn) {
  removeLoginItem();
  host.fakeSessionLoginItems.refusesInsertion = true;
  delegate->applicationWillFinishLaunching();
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(delegateMessages(), Contains("Failed to add application to login items"));
  EXPECT_FALSE(delegate->protocolHandler().isPaused());
}

TEST_F(StartUp, FailedRegistrationTerminatesAndTheBufferedLinkIsNeverProcessed) {
  unregisterSchemes();
  host.fakeLaunchServices.statusForScheme["mervale"] = -10810;
  delegate->applicationWillFinishLaunching();
  open(kLink);
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(delegateMessages(),
              ElementsAre("Application is not registered for all supported protocol schemes",
                          "Failed to register for supported protocol schemes"));
  EXPECT_EQ(host.fakeApplication.terminations, 1);
  EXPECT_TRUE(delegate->protocolHandler().isPaused());
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(StartUp, SuccessfulRegistrationDoesNotTerminate) {
  unregisterSchemes();
  launch();
  EXPECT_EQ(host.fakeApplication.terminations, 0);
}

TEST_F(StartUp, LinkThatLaunchedTheApplicationIsProcessedBeforeLaunchingEnds) {
  delegate->applicationWillFinishLaunching();
  open(kLink);
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
  delegate->applicationDidFinishLaunching();
  EXPECT_EQ(onlyRequest().url->absoluteString(), "http://127.0.0.1/p?session_id=7");
}

TEST_F(StartUp, LinkThatLaunchedAReadyApplicationIsReplayedBehindTheStart) {
  delegate->applicationWillFinishLaunching();
  open(kLink);
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(milestones(), ElementsAre("Started", "Loading URL from buffer",
                                        "[ZQN5VendrilAppDelegate] Process details",
                                        "[ZQN5VendrilAppDelegate] Sending POST request"));
}

TEST_F(StartUp, LinkThatLaunchedTheApplicationIsReplayedBehindLoginItemsAndRegistration) {
  removeLoginItem();
  unregisterSchemes();
  delegate->applicationWillFinishLaunching();
  open(kLink);
  delegate->applicationDidFinishLaunching();
  EXPECT_THAT(milestones(),
              ElementsAre("[ZQN5VendrilAppDelegate] Successfully added",
                          "[ZQN5VendrilAppDelegate] Successfully registered", "Started",
                          "Loading URL from buffer", "[ZQN5VendrilAppDelegate] Process details",
                          "[ZQN5VendrilAppDelegate] Sending POST request"));
}

TEST_F(StartUp, DontSearchWordReachesTheReport) {
  std::filesystem::remove(executable);
  giveArguments({"dont-search-for-brelto-orvanta"});
  launch();
  open(kLink);
  EXPECT_THAT(onlyRequest().httpBody.value_or(""), HasSubstr("%22videoCapable%22:1"));
}

TEST_F(StartUp, WithoutTheDontSearchWordTheReportTellsOfAClientThatIsGone) {
  std::filesystem::remove(executable);
  launch();
  open(kLink);
  EXPECT_THAT(onlyRequest().httpBody.value_or(""), HasSubstr("%22videoCapable%22:0"));
}

TEST_F(StartUp, LinkIsDroppedOnceTheDelegateIsGone) {
  launch();
  delegate.reset();
  open(kLink);
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(StartUp, FirstStartHasNoLogFileUntilALinkLoadsAConfiguration) {
  launch();
  EXPECT_EQ(delegate->logger()->path(), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(logDirectory));
  open(kLink);
  EXPECT_EQ(delegate->logger()->path(), logDirectory + "/Vendril.log");
  EXPECT_TRUE(std::filesystem::exists(logDirectory + "/Vendril.log"));
}

TEST_F(StartUp, StoredLogDirectoryNamesTheFirstLogFile) {
  host.fakeUserDefaults.values["LogDirectory"] = logDirectory;
  delegate->applicationWillFinishLaunching();
  EXPECT_EQ(delegate->logger()->path(), logDirectory + "/Vendril.log");
  EXPECT_THAT(host.fakeSystemLog.take(), Contains("[ZQN5SimpleLogger] Redirecting log file to: '" +
                                                  logDirectory + "/Vendril.log'"));
}

TEST_F(StartUp, OldLogFileOverFourMebibytesIsRemovedAtStartUp) {
  const std::string path = logDirectory + "/Vendril.log";
  host.fakeUserDefaults.values["LogDirectory"] = logDirectory;
  writeFile(path, "old");
  std::filesystem::resize_file(path, 4'194'305);
  delegate->applicationWillFinishLaunching();
  EXPECT_EQ(std::filesystem::file_size(path), 0U) << "the file is created afresh";
}

TEST_F(StartUp, UnusableLogDirectoryLeavesTheLoggerWithoutAFile) {
  writeFile(logDirectory, "a file");
  host.fakeUserDefaults.values["LogDirectory"] = logDirectory;
  delegate->applicationWillFinishLaunching();
  EXPECT_EQ(delegate->logger()->path(), std::nullopt);
  EXPECT_THAT(host.fakeSystemLog.take(),
              Contains("Failed to create log path: Cannot create directory '" + logDirectory +
                       "' - Expected a folder to store application logs, found a file"));
}

TEST_F(StartUp, WillTerminatePausesIntakeSoThatALaterLinkIsOnlyBuffered) {
  launch();
  delegate->applicationWillTerminate();
  EXPECT_TRUE(delegate->protocolHandler().isPaused());
  open(kLink);
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
  EXPECT_THAT(host.fakeSystemLog.take(), Not(Contains(StartsWith("Executing"))));
}

}  // namespace
}  // namespace vendril
