#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "launcher/ZQN5Launcher.h"
#include "support/FakeHost.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kOwnPath = "/opt/vendril/bin/vendril";

/// What cleaning a list of this many items logs when none of them is stale.
std::string cleanedCount(int items) {
  return "clean: searching for auto start item to be removed in array with '" +
         std::to_string(items) + "' items.";
}

class LaunchOnLogin : public testing::Test {
 protected:
  void setLaunchOnLogin(bool flag) {
    ZQN5Launcher::setLaunchOnLogin(
        flag, [this](std::string_view message) { log_.emplace_back(message); });
  }

  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& item : loginItems_.items) {
      result.push_back(item->name.value_or("(null)"));
    }
    return result;
  }

  FakeHost host_;
  FakeSessionLoginItems& loginItems_ = host_.fakeSessionLoginItems;
  std::vector<std::string> log_;
};

TEST_F(LaunchOnLogin, IsFalseForAnEmptyList) {
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
  EXPECT_THAT(loginItems_.history, ElementsAre("snapshot"));
}

TEST_F(LaunchOnLogin, IsTrueForAnItemThatPointsToTheApplicationWhateverItsName) {
  loginItems_.add("Something else", "/usr/bin/true");
  loginItems_.add(std::nullopt, kOwnPath);
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, IsFalseForAnItemThatOnlyBearsItsName) {
  loginItems_.add("Vendril", "/usr/bin/vendril");
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, ComparesTheTextOfUrlsAndNothingElse) {
  loginItems_.add("Vendril", "/opt/vendril/bin/Vendril");
  loginItems_.add("Vendril", "/opt/vendril/bin/../bin/vendril");
  loginItems_.add("Vendril", "/opt/vendril/bin/vendril/");
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, ComparesAPathThatNeedsEscaping) {
  host_.fakeBundle.path = "/opt/two words/vendril";
  loginItems_.add("Vendril", "/opt/two words/vendril");
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, PassesOverItemsThatCannotBeResolved) {
  loginItems_.add("gone", "", "no such file");
  loginItems_.add("gone without a reason", "");
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
  loginItems_.add("Vendril", kOwnPath);
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
}

/// A login item that counts how often it is resolved.
class CountingLoginItem : public FakeLoginItem {
 public:
  mutable int resolutions = 0;

  ResolvedUrl resolvedUrl() const override {
    ++resolutions;
    return FakeLoginItem::resolvedUrl();
  }
};

TEST_F(LaunchOnLogin, ResolvesNothingBehindTheMatchingItem) {
  loginItems_.add("Vendril", kOwnPath);
  const auto later = std::make_shared<CountingLoginItem>();
  loginItems_.items.push_back(later);
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
  EXPECT_EQ(later->resolutions, 0);
}

TEST_F(LaunchOnLogin, AddingInsertsAHiddenItemAtTheEnd) {
  loginItems_.add("Other", "/usr/bin/true");
  setLaunchOnLogin(true);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(1), "setting launch on login to '1'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "releasing item reference after inserting auto start item. "
                                "Cosidering this as a success."));
  EXPECT_THAT(loginItems_.history,
              ElementsAre("snapshot", "insert file:///opt/vendril/bin/vendril"));
  EXPECT_THAT(names(), ElementsAre("Other", "Vendril"));
  EXPECT_EQ(loginItems_.items.back()->properties,
            (PropertyList::Dictionary{{"com.apple.loginitem.HideOnLaunch", true}}));
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, AddingDoesNotLookForAnItemThatIsThereAlready) {
  loginItems_.add("Vendril", kOwnPath);
  setLaunchOnLogin(true);
  EXPECT_THAT(names(), ElementsAre("Vendril", "Vendril"));
}

TEST_F(LaunchOnLogin, RefusedInsertionIsLoggedAsAFailure) {
  loginItems_.refusesInsertion = true;
  setLaunchOnLogin(true);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(0), "setting launch on login to '1'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "not releasing item reference after inserting auto start item, "
                                "because it was returned as NULL. Considering this as a failure."));
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, AddingCleansStaleItemsFirst) {
  loginItems_.add("Brelto Orvanta", "/old/vendril");
  setLaunchOnLogin(true);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(1), "clean: Brelto item name : Brelto Orvanta",
                                "clean: found matching auto start item in different URL : "
                                "file:///old/vendril. Removing...",
                                "clean: remove item status : 0", "clean: some item was cleaned",
                                cleanedCount(0), "setting launch on login to '1'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "releasing item reference after inserting auto start item. "
                                "Cosidering this as a success."));
  EXPECT_THAT(names(), ElementsAre("Vendril"));
}

TEST_F(LaunchOnLogin, RemovingCleansStaleItemsFirst) {
  loginItems_.add("Brelto Orvanta", "/old/vendril");
  setLaunchOnLogin(false);
  EXPECT_THAT(
      log_, ElementsAre(
                cleanedCount(1), "clean: Brelto item name : Brelto Orvanta",
                "clean: found matching auto start item in different URL : file:///old/vendril. "
                "Removing...",
                "clean: remove item status : 0", "clean: some item was cleaned", cleanedCount(0),
                "setting launch on login to '0'", "bundle URL is 'file:///opt/vendril/bin/vendril'",
                "searching for auto start item to be removed in array with '0' items."));
}

TEST_F(LaunchOnLogin, MovedApplicationIsNotAtTheOldPlaceAndIsAddedAnew) {
  setLaunchOnLogin(true);
  loginItems_.items.back()->name = "Brelto Mervale";
  host_.fakeBundle.path = "/home/me/vendril";
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
  setLaunchOnLogin(true);
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
  EXPECT_THAT(names(), ElementsAre("Vendril"));
}

TEST_F(LaunchOnLogin, MovedApplicationLeavesAnOldItemWithoutAMarkedNameAlone) {
  loginItems_.add("Vendril", "/old/vendril");
  EXPECT_FALSE(ZQN5Launcher::launchOnLogin());
  setLaunchOnLogin(true);
  EXPECT_THAT(names(), ElementsAre("Vendril", "Vendril"));
  EXPECT_EQ(loginItems_.items.front()->target, Url::fileUrlWithPath("/old/vendril"));
  EXPECT_EQ(loginItems_.items.back()->target, Url::fileUrlWithPath(kOwnPath));
}

TEST_F(LaunchOnLogin, RemovingTakesEveryItemOfTheApplicationOut) {
  loginItems_.add("Vendril", kOwnPath);
  loginItems_.add("Other", "/usr/bin/true");
  loginItems_.add("Twin", kOwnPath);
  setLaunchOnLogin(false);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(3), "setting launch on login to '0'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "searching for auto start item to be removed in array with '3' "
                                "items.",
                                "found matching auto start item. Removing...",
                                "found matching auto start item. Removing..."));
  EXPECT_THAT(loginItems_.history,
              ElementsAre("snapshot", "snapshot", "remove Vendril", "remove Twin"));
  EXPECT_THAT(names(), ElementsAre("Other"));
}

TEST_F(LaunchOnLogin, RemovingLogsWhyAnItemCannotBeResolvedAndGoesOn) {
  loginItems_.add("gone", "", "no such file");
  loginItems_.add("gone without a reason", "");
  loginItems_.add("Vendril", kOwnPath);
  setLaunchOnLogin(false);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(3), "setting launch on login to '0'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "searching for auto start item to be removed in array with '3' "
                                "items.",
                                "error retrieving auto start item from list 'no such file'",
                                "found matching auto start item. Removing..."));
  EXPECT_THAT(names(), ElementsAre("gone", "gone without a reason"));
}

TEST_F(LaunchOnLogin, RefusedRemovalIsNotNoticed) {
  loginItems_.add("Vendril", kOwnPath);
  loginItems_.add("Twin", kOwnPath);
  loginItems_.removalStatus = -50;
  setLaunchOnLogin(false);
  EXPECT_THAT(log_, ElementsAre(cleanedCount(2), "setting launch on login to '0'",
                                "bundle URL is 'file:///opt/vendril/bin/vendril'",
                                "searching for auto start item to be removed in array with '2' "
                                "items.",
                                "found matching auto start item. Removing...",
                                "found matching auto start item. Removing..."));
  EXPECT_TRUE(ZQN5Launcher::launchOnLogin());
}

TEST_F(LaunchOnLogin, AddingAndRemovingWorkWithoutALoggerBlock) {
  loginItems_.add("Brelto Orvanta", "/old/vendril");
  loginItems_.add("gone", "", "no such file");
  ZQN5Launcher::setLaunchOnLogin(true, LoggerBlock());
  EXPECT_THAT(names(), ElementsAre("gone", "Vendril"));
  ZQN5Launcher::setLaunchOnLogin(false, LoggerBlock());
  EXPECT_THAT(names(), ElementsAre("gone"));
  loginItems_.refusesInsertion = true;
  ZQN5Launcher::setLaunchOnLogin(true, LoggerBlock());
  EXPECT_THAT(names(), ElementsAre("gone"));
}

}  // namespace
}  // namespace vendril
