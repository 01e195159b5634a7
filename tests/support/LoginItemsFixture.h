#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/AutostartLoginItems.h"
#include "support/DesktopFiles.h"
#include "support/FakeBundle.h"
#include "support/PrivateHome.h"

namespace vendril {

inline constexpr const char* kOwnName = "com.brelto.vendril.desktop";
inline constexpr const char* kSecondName = "com.brelto.vendril-2.desktop";

inline const PropertyList::Dictionary kHidden{{SessionLoginItems::kHideOnLaunch, true}};

/// The autostart directories of a private home, read and written for a bundle that is there.
class AutostartLoginItemsOfTheDesktop : public testing::Test {
 protected:
  using Path = std::filesystem::path;

  AutostartLoginItemsOfTheDesktop() { bundle_.path = files_.program("bin/vendril"); }

  AutostartLoginItems items() const { return AutostartLoginItems(bundle_); }
  Url bundleUrl() const { return Url::fileUrlWithPath(bundle_.path); }

  /// The names in the list, in its order.
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& item : items().copySnapshot()) {
      names.push_back(item->displayName().value_or("(none)"));
    }
    return names;
  }

  /// The only item of the list.
  SessionLoginItems::Item onlyItem() const {
    const auto snapshot = items().copySnapshot();
    EXPECT_EQ(snapshot.size(), 1U);
    return snapshot.empty() ? nullptr : snapshot.front();
  }

  /// The target of the only item of the list.
  std::optional<std::string> onlyTarget() const {
    const auto item = onlyItem();
    const auto url = item ? item->resolvedUrl().url : std::nullopt;
    return url ? std::optional(url->absoluteString()) : std::nullopt;
  }

  /// Whether some item means this very program.
  bool launchesOnLogin() const {
    const auto snapshot = items().copySnapshot();
    return std::any_of(snapshot.begin(), snapshot.end(),
                       [this](const auto& item) { return item->resolvedUrl().url == bundleUrl(); });
  }

  SessionLoginItems::Item insertOurs() const {
    return items().insertItemAtEnd(bundleUrl(), kHidden);
  }

  Path users(const std::string& name) const { return home_.config() / "autostart" / name; }

  static void setModified(const Path& path, int secondsAgo) {
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(path, now - std::chrono::seconds(secondsAgo));
  }

  PrivateHome home_;
  DesktopFiles files_{home_};
  FakeBundle bundle_;
};

}  // namespace vendril
