#pragma once

#include <string>
#include <vector>

#include "platform/Date.h"

namespace vendril {

/// The running process. Main thread only, but for `currentDate`, which any thread may ask.
class ProcessInfo {
 public:
  virtual ~ProcessInfo() = default;

  /// The command-line arguments, the executable's path first.
  virtual std::vector<std::string> arguments() const = 0;

  /// The wall clock's time.
  virtual Date currentDate() const = 0;
};

}  // namespace vendril
