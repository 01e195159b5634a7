#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "launcher/ZQN5Launcher.h"
#include "support/FakeHost.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr const char* kOwnPath = "/opt/vendril/bin/vendril";

class LoginItemCleanup : public testing::Test {
 protected:
  LoggerBlock loggerBlock() {
    return [this](std::string_view message) { log_.emplace_back(message); };
  }
  bool cleanOne() { return ZQN5Launcher::cleanLoginItemWithloggerBlock(loggerBlock()); }
  void cleanAll() { ZQN5Launcher::cleanLoginItemsWithloggerBlock(loggerBlock()); }

  std::vector<std::string> takeLog() { return std::exchange(log_, {}); }

  FakeHost host_;
  FakeSessionLoginItems& loginItems_ = host_.fakeSessionLoginItems;
  std::vector<std::string> log_;
};

TEST_F(LoginItemCleanup, EmptyListTakesOnePass) {
  cleanAll();
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '0' items."));
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot"));
  EXPECT_FALSE(cleanOne());
}

TEST_F(LoginItemCleanup, OnePassRemovesTheFirstStaleItemOnly) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.add("BRELTO MERVALE MEETING", "/old/mervale");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '2' items.",
                                     "clean: Brelto item name : Brelto Orvanta",
                                     "clean: found matching auto start item in different URL : "
                                     "file:///old/orvanta. Removing...",
                                     "clean: remove item status : 0"));
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot", "remove Brelto Orvanta"));
}

TEST_F(LoginItemCleanup, StaleItemIsRecognisedWithoutRemovingIt) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.add("Brelto Orvanta", kOwnPath);
  loginItems_.add("Other", "/old/orvanta");
  std::vector<bool> found;
  for (const auto& item : loginItems_.copySnapshot()) {
    found.push_back(ZQN5Launcher::isStaleLoginItem(*item, {}));
  }
  EXPECT_THAT(found, ElementsAre(true, false, false));
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot"));
}

TEST_F(LoginItemCleanup, StaleItemsAreRemovedOneInEachPass) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.add("BRELTO MERVALE MEETING", "/old/mervale");
  cleanAll();
  EXPECT_THAT(
      takeLog(),
      ElementsAre("clean: searching for auto start item to be removed in array with '2' items.",
                  "clean: Brelto item name : Brelto Orvanta",
                  "clean: found matching auto start item in different URL : file:///old/orvanta. "
                  "Removing...",
                  "clean: remove item status : 0", "clean: some item was cleaned",
                  "clean: searching for auto start item to be removed in array with '1' items.",
                  "clean: Brelto item name : BRELTO MERVALE MEETING",
                  "clean: found matching auto start item in different URL : file:///old/mervale. "
                  "Removing...",
                  "clean: remove item status : 0", "clean: some item was cleaned",
                  "clean: searching for auto start item to be removed in array with '0' items."));
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot", "remove Brelto Orvanta", "snapshot",
                                               "remove BRELTO MERVALE MEETING", "snapshot"));
}

TEST_F(LoginItemCleanup, NamesWithoutBothMarksAreNeverTouched) {
  for (const auto& name : std::vector<std::optional<std::string>>{
           "Orvanta", "Mervale", "Orvanta Mervale", "Brelto Agent", "Brelto", "Brelt Orvanta",
           "Brelto Orvant a", "", std::nullopt}) {
    loginItems_.add(name, "/old/item");
    loginItems_.add(name, "", "gone");
  }
  EXPECT_FALSE(cleanOne());
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '18' items."));
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot"));
}

TEST_F(LoginItemCleanup, MarksMatchAnywhereInTheNameInAnyCase) {
  for (const char* name : {"xbreltoxmervalex", "MERVALEBRELTO", "my bReLtO's oRVANTA",
                           "breltorvanta", "brelto mervale orvanta",
                           "\xFF"
                           "brelto\xC3 orvanta\x80"}) {
    loginItems_.add(name, "/old/item");
    EXPECT_TRUE(cleanOne()) << name;
    loginItems_.items.clear();
  }
}

TEST_F(LoginItemCleanup, NamesThatAreNotUtf8AreHandled) {
  loginItems_.add("\xFF\xFE", "/old/item");
  loginItems_.add(
      "\xFF"
      "Brelto\xC3Mervale\x80",
      "/old/item");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot",
                                               "remove \xFF"
                                               "Brelto\xC3Mervale\x80"));
}

TEST_F(LoginItemCleanup, ItemOfTheApplicationIsSkippedAndStays) {
  loginItems_.add("Brelto Orvanta", kOwnPath);
  cleanAll();
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '1' items.",
                                     "clean: Brelto item name : Brelto Orvanta",
                                     "clean: found matching auto start item. Skipping..."));
  EXPECT_EQ(loginItems_.items.size(), 1U);
}

TEST_F(LoginItemCleanup, StaleItemBehindTheItemOfTheApplicationIsFound) {
  loginItems_.add("Other", "/usr/bin/true");
  loginItems_.add("Brelto Orvanta", kOwnPath);
  loginItems_.add("Brelto Mervale", "/old/mervale");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '3' items.",
                                     "clean: Brelto item name : Brelto Orvanta",
                                     "clean: found matching auto start item. Skipping...",
                                     "clean: Brelto item name : Brelto Mervale",
                                     "clean: found matching auto start item in different URL : "
                                     "file:///old/mervale. Removing...",
                                     "clean: remove item status : 0"));
}

TEST_F(LoginItemCleanup, OwnUrlIsComparedAsText) {
  loginItems_.add("Brelto Orvanta", "/opt/vendril/./bin/vendril");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(loginItems_.items, IsEmpty());
}

TEST_F(LoginItemCleanup, ItemWhoseTargetIsGoneIsRemovedAfterItsError) {
  loginItems_.add("Brelto Orvanta", "", "no such file");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(
      takeLog(),
      ElementsAre("clean: searching for auto start item to be removed in array with '1' "
                  "items.",
                  "clean: Brelto item name : Brelto Orvanta",
                  "clean: error retrieving auto start item from list 'no such file'",
                  "clean: Removing auto start item without URL", "clean: remove item status : 0"));
  EXPECT_THAT(loginItems_.items, IsEmpty());
}

TEST_F(LoginItemCleanup, ItemWhoseTargetIsGoneWithoutAnErrorIsRemoved) {
  loginItems_.add("Brelto Orvanta", "");
  EXPECT_TRUE(cleanOne());
  EXPECT_THAT(takeLog(), ElementsAre("clean: searching for auto start item to be removed in array "
                                     "with '1' items.",
                                     "clean: Brelto item name : Brelto Orvanta",
                                     "clean: Removing auto start item without URL",
                                     "clean: remove item status : 0"));
}

TEST_F(LoginItemCleanup, RefusedRemovalCountsAsDone) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.removalStatus = -5000;
  EXPECT_TRUE(cleanOne());
  EXPECT_EQ(takeLog().back(), "clean: remove item status : -5000");
  EXPECT_EQ(loginItems_.items.size(), 1U);
}

TEST_F(LoginItemCleanup, ItemThatCannotBeRemovedEndsTheCleanupAfterAHundredPasses) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.removalStatus = -5000;
  cleanAll();
  std::vector<std::string> expected;
  for (int pass = 0; pass < 100; ++pass) {
    expected.insert(
        expected.end(),
        {"clean: searching for auto start item to be removed in array with '1' items.",
         "clean: Brelto item name : Brelto Orvanta",
         "clean: found matching auto start item in different URL : file:///old/orvanta. "
         "Removing...",
         "clean: remove item status : -5000", "clean: some item was cleaned"});
  }
  EXPECT_THAT(takeLog(), ElementsAreArray(expected));
  EXPECT_EQ(std::count(loginItems_.history.begin(), loginItems_.history.end(), "snapshot"), 100);
}

TEST_F(LoginItemCleanup, MoreThanAHundredStaleItemsLeaveARest) {
  for (int item = 0; item < 103; ++item) {
    loginItems_.add("Brelto Orvanta", "/old/orvanta");
  }
  cleanAll();
  EXPECT_EQ(loginItems_.items.size(), 3U);
}

TEST_F(LoginItemCleanup, WithoutALoggerBlockStaleItemsAreRemovedAllTheSame) {
  loginItems_.add("Brelto Orvanta", "/old/orvanta");
  loginItems_.add("Brelto Orvanta", kOwnPath);
  loginItems_.add("Brelto Mervale", "", "no such file");
  ZQN5Launcher::cleanLoginItemsWithloggerBlock(LoggerBlock());
  ASSERT_EQ(loginItems_.items.size(), 1U);
  EXPECT_EQ(loginItems_.items.front()->target, Url::fileUrlWithPath(kOwnPath));
}

}  // namespace
}  // namespace vendril
