#include "support/DelegateFixture.h"

namespace vendril {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using DelegateState = DelegateFixture;

TEST_F(DelegateState, PlainLoggerBlockLogsItsMessageAsItStands) {
  launch();
  delegate->plainLoggerBlock()("100%@ %s sure");
  EXPECT_THAT(host.fakeSystemLog.take(), ElementsAre("100%@ %s sure"));
}

TEST_F(DelegateState, PlainLoggerBlockDoesNothingOnceTheDelegateIsGone) {
  launch();
  const LoggerBlock block = delegate->plainLoggerBlock();
  delegate.reset();
  host.fakeSystemLog.take();
  block("lost");
  EXPECT_THAT(host.fakeSystemLog.take(), IsEmpty());
}

TEST_F(DelegateState, PlainLoggerBlocksNeverKeepTheDelegateAlive) {
  launch();
  const std::weak_ptr<ZQN5VendrilAppDelegate> watched = delegate;
  const LoggerBlock block = delegate->plainLoggerBlock();
  delegate.reset();
  EXPECT_TRUE(watched.expired()) << "the configuration, the protocol handler or the block keeps it";
}

TEST_F(DelegateState, PrefixedLoggerBlockAddsTheClassName) {
  launch();
  delegate->prefixedLoggerBlock()("bundle URL");
  EXPECT_THAT(host.fakeSystemLog.take(), ElementsAre("[ZQN5VendrilAppDelegate] bundle URL"));
}

TEST_F(DelegateState, PrefixedLoggerBlockKeepsTheDelegateAlive) {
  launch();
  const std::weak_ptr<ZQN5VendrilAppDelegate> watched = delegate;
  LoggerBlock block = delegate->prefixedLoggerBlock();
  delegate.reset();
  EXPECT_FALSE(watched.expired());
  block = nullptr;
  EXPECT_TRUE(watched.expired());
}

TEST_F(DelegateState, LogPathOfAMissingOrEmptyDirectoryIsNothingWhateverTheCreateFlag) {
  for (const bool create : {false, true}) {
    EXPECT_EQ(delegate->logPath(std::nullopt, create), std::nullopt);
    EXPECT_EQ(delegate->logPath("", create), std::nullopt);
  }
}

TEST_F(DelegateState, LogFileIsNamedAfterTheBundle) {
  host.fakeBundle.info.insert_or_assign("CFBundleName", "Other Name");
  EXPECT_EQ(delegate->logPath("/var/log/x", false), "/var/log/x/Other Name.log");
}

TEST_F(DelegateState, LogPathWithoutABundleNameIsNothing) {
  host.fakeBundle.info.erase("CFBundleName");
  EXPECT_EQ(delegate->logPath("/var/log/x", false), std::nullopt);
}

TEST_F(DelegateState, LogPathWithCreateMakesTheDirectory) {
  EXPECT_EQ(delegate->logPath(logDirectory, false), logDirectory + "/Vendril.log");
  EXPECT_FALSE(std::filesystem::exists(logDirectory));
  EXPECT_EQ(delegate->logPath(logDirectory, true), logDirectory + "/Vendril.log");
  EXPECT_TRUE(std::filesystem::is_directory(logDirectory));
}

TEST_F(DelegateState, LogPathKeepsAFileOfFourMebibytesAndRemovesALargerOne) {
  const std::string path = logDirectory + "/Vendril.log";
  writeFile(path, "");
  std::filesystem::resize_file(path, 4'194'304);
  delegate->logPath(logDirectory, true);
  EXPECT_TRUE(std::filesystem::exists(path));
  std::filesystem::resize_file(path, 4'194'305);
  delegate->logPath(logDirectory, true);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(DelegateState, ProtocolHandlerIsTheSharedInstanceOnEveryRead) {
  EXPECT_EQ(&delegate->protocolHandler(), &ZQN5ProtocolHandler::sharedInstance());
  EXPECT_EQ(&delegate->protocolHandler(), &delegate->protocolHandler());
}

TEST_F(DelegateState, LaunchOnLoginAsksTheLoginItemsAfresh) {
  EXPECT_TRUE(delegate->launchOnLogin());
  host.fakeSessionLoginItems.items.clear();
  EXPECT_FALSE(delegate->launchOnLogin());
}

TEST_F(DelegateState, SetLaunchOnLoginLogsWithTheClassName) {
  launch();
  delegate->setLaunchOnLogin(false);
  EXPECT_FALSE(delegate->launchOnLogin());
  const std::vector<std::string> messages = delegateMessages();
  EXPECT_THAT(messages, ::testing::Contains("setting launch on login to '0'"));
  EXPECT_THAT(messages, ::testing::Contains("bundle URL is 'file:///opt/vendril/bin/vendril'"));
}

TEST_F(DelegateState, NewDelegateHoldsNothing) {
  EXPECT_EQ(delegate->startTime(), std::nullopt);
  EXPECT_EQ(delegate->logger(), nullptr);
  EXPECT_EQ(delegate->configuration(), nullptr);
  EXPECT_EQ(delegate->operationQueue(), nullptr);
  EXPECT_EQ(delegate->errorAlert(), nullptr);
  EXPECT_EQ(delegate->window().lock(), nullptr);
}

TEST_F(DelegateState, StoredPropertiesHavePlainAccessors) {
  const auto logger = std::make_shared<ZQN5SimpleLogger>();
  const auto configuration = std::make_shared<ZQN5PublishedConfiguration>(nullptr);
  const auto queue = std::make_shared<FakeOperationQueue>();
  const auto window = std::make_shared<Window>();
  delegate->setLogger(logger);
  delegate->setConfiguration(configuration);
  delegate->setOperationQueue(queue);
  delegate->setWindow(window);
  delegate->setAllowedCharacters(CharacterSet("x"));
  delegate->setSearchForBreltoOrvanta(true);
  EXPECT_EQ(delegate->logger(), logger);
  EXPECT_EQ(delegate->configuration(), configuration);
  EXPECT_EQ(delegate->operationQueue(), queue);
  EXPECT_EQ(delegate->window().lock(), window);
  EXPECT_EQ(delegate->escape("xy"), "x%79");
  EXPECT_TRUE(delegate->searchForBreltoOrvanta());
}

}  // namespace
}  // namespace vendril
