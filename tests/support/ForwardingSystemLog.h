#pragma once

#include "platform/SystemLog.h"

namespace vendril {

/// Hands every operation on to another SystemLog, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingSystemLog : public SystemLog {
 public:
  explicit ForwardingSystemLog(SystemLog& target) : target_(target) {}

  void write(std::string_view message) noexcept override { target_.write(message); }

 private:
  SystemLog& target_;
};

}  // namespace vendril
