#pragma once

#include "platform/UserDirectories.h"

namespace vendril {

/// Hands every operation on to another UserDirectories, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingUserDirectories : public UserDirectories {
 public:
  explicit ForwardingUserDirectories(UserDirectories& target) : target_(target) {}

  std::vector<std::string> libraryDirectories() const override {
    return target_.libraryDirectories();
  }

 private:
  UserDirectories& target_;
};

}  // namespace vendril
