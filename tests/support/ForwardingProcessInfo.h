#pragma once

#include "platform/ProcessInfo.h"

namespace vendril {

/// Hands every operation on to another ProcessInfo, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingProcessInfo : public ProcessInfo {
 public:
  explicit ForwardingProcessInfo(ProcessInfo& target) : target_(target) {}

  std::vector<std::string> arguments() const override { return target_.arguments(); }
  Date currentDate() const override { return target_.currentDate(); }

 private:
  ProcessInfo& target_;
};

}  // namespace vendril
