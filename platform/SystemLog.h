#pragma once

#include <string_view>

namespace vendril {

/// The system's log. Any thread may write at any time.
class SystemLog {
 public:
  virtual ~SystemLog() = default;

  /// Records one message. A log that cannot be written never troubles its caller.
  virtual void write(std::string_view message) noexcept = 0;
};

}  // namespace vendril
