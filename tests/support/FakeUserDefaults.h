#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/UserDefaults.h"

namespace vendril {

/// A key-value store in memory that tells what has been flushed.
class FakeUserDefaults : public UserDefaults {
 public:
  std::map<std::string, std::string, std::less<>> values;
  /// The values as they were at the last successful `synchronize`.
  std::map<std::string, std::string, std::less<>> synchronized;
  bool failsToSynchronize = false;
  /// What was asked, in order: "get KEY", "set KEY=VALUE", "remove KEY", "synchronize".
  std::vector<std::string> history;

  std::optional<std::string> stringForKey(std::string_view key) override {
    history.push_back("get " + std::string(key));
    const auto entry = values.find(key);
    return entry != values.end() ? std::optional(entry->second) : std::nullopt;
  }

  void setObject(const std::optional<std::string>& value, std::string_view key) override {
    if (value) {
      history.push_back("set " + std::string(key) + "=" + *value);
      values[std::string(key)] = *value;
    } else {
      history.push_back("remove " + std::string(key));
      values.erase(std::string(key));
    }
  }

  bool synchronize() override {
    history.emplace_back("synchronize");
    if (!failsToSynchronize) {
      synchronized = values;
    }
    return !failsToSynchronize;
  }
};

}  // namespace vendril
