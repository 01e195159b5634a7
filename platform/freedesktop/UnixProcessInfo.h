#pragma once

#include <string>
#include <vector>

#include "platform/ProcessInfo.h"

namespace vendril {

/// The process as `main` got to know it, and the system's clock.
class UnixProcessInfo : public ProcessInfo {
 public:
  UnixProcessInfo(int argc, const char* const* argv) : arguments_(argv, argv + argc) {}

  std::vector<std::string> arguments() const override { return arguments_; }
  Date currentDate() const override;

 private:
  std::vector<std::string> arguments_;
};

}  // namespace vendril
