#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/LaunchServices.h"

namespace vendril {

/// A registry of scheme handlers in memory. Setting a default succeeds unless a status is given for
/// the scheme or for the handler.
class FakeLaunchServices : public LaunchServices {
 public:
  std::map<std::string, std::string, std::less<>> defaults;
  std::map<std::string, std::vector<std::string>, std::less<>> handlers;
  /// Faults: the status that setting a default answers, by scheme and by handler.
  std::map<std::string, std::int32_t, std::less<>> statusForScheme;
  std::map<std::string, std::int32_t, std::less<>> statusForHandler;
  /// What was asked, in order: "set SCHEME HANDLER", "default SCHEME", "all SCHEME".
  std::vector<std::string> history;
  /// The schemes for which one look was to be shared, and how many defaults were asked for without
  /// one.
  std::vector<std::set<std::string>> looks;
  int questionsWithoutALook = 0;

  std::int32_t setDefaultHandlerForURLScheme(std::string_view scheme,
                                             std::string_view bundleIdentifier) override {
    history.push_back("set " + std::string(scheme) + " " + std::string(bundleIdentifier));
    if (const auto fault = statusForScheme.find(scheme); fault != statusForScheme.end()) {
      return fault->second;
    }
    if (const auto fault = statusForHandler.find(bundleIdentifier);
        fault != statusForHandler.end()) {
      return fault->second;
    }
    defaults[std::string(scheme)] = std::string(bundleIdentifier);
    return kSuccess;
  }

  std::optional<std::string> copyDefaultHandlerForURLScheme(std::string_view scheme) override {
    history.push_back("default " + std::string(scheme));
    questionsWithoutALook += look_.expired() ? 1 : 0;
    const auto entry = defaults.find(scheme);
    return entry != defaults.end() ? std::optional(entry->second) : std::nullopt;
  }

  std::optional<std::vector<std::string>> copyAllHandlersForURLScheme(
      std::string_view scheme) override {
    history.push_back("all " + std::string(scheme));
    const auto entry = handlers.find(scheme);
    return entry != handlers.end() ? std::optional(entry->second) : std::nullopt;
  }

  std::shared_ptr<void> shareOneLook(const std::set<std::string>& schemes) override {
    looks.push_back(schemes);
    auto look = std::make_shared<int>();
    look_ = look;
    return look;
  }

  /// How many times a default was set.
  std::ptrdiff_t setCount() const {
    return std::count_if(history.begin(), history.end(),
                         [](const std::string& entry) { return entry.starts_with("set "); });
  }

 private:
  std::weak_ptr<int> look_;
};

}  // namespace vendril
