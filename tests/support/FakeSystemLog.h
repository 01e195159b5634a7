#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SystemLog.h"

namespace vendril {

/// Keeps every message. Any thread may write and read.
class FakeSystemLog : public SystemLog {
 public:
  void write(std::string_view message) noexcept override {
    const std::lock_guard lock(mutex_);
    messages_.emplace_back(message);
  }

  std::vector<std::string> messages() const {
    const std::lock_guard lock(mutex_);
    return messages_;
  }

  /// The messages since the last call.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(messages_, {});
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
};

}  // namespace vendril
