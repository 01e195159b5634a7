#pragma once

#include "platform/UserDefaults.h"

namespace vendril {

/// Hands every operation on to another UserDefaults, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingUserDefaults : public UserDefaults {
 public:
  explicit ForwardingUserDefaults(UserDefaults& target) : target_(target) {}

  std::optional<std::string> stringForKey(std::string_view key) override {
    return target_.stringForKey(key);
  }
  void setObject(const std::optional<std::string>& value, std::string_view key) override {
    target_.setObject(value, key);
  }
  bool synchronize() override { return target_.synchronize(); }

 private:
  UserDefaults& target_;
};

}  // namespace vendril
