#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "logging/ZQN5SimpleLogger.h"
#include "support/AcceptingFdopen.h"
#include "support/FakeHost.h"
#include "support/ScopedTimeZone.h"
#include "support/TemporaryDirectory.h"

namespace vendril {

/// The descriptors of this process that are open on the file at `path`.
inline std::vector<int> descriptorsOf(const std::string& path) {
  std::vector<int> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    if (std::filesystem::read_symlink(entry, ignored) == path) {
      found.push_back(std::stoi(entry.path().filename()));
    }
  }
  return found;
}

/// A logger's surroundings: a fake desktop in UTC and a directory for its files.
class SimpleLogger : public testing::Test {
 protected:
  ScopedTimeZone zone{"UTC0"};
  FakeHost fake;
  TemporaryDirectory directory;
};

/// On a C library that opens the log file's stream.
class SimpleLoggerWithFile : public SimpleLogger {
 protected:
  AcceptingFdopen accepting;
};

}  // namespace vendril
