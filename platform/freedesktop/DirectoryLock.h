#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/freedesktop/FileDescriptor.h"

namespace vendril {

/// Keeps every other process and thread that asks for the same lock out of a directory. The lock is
/// advisory, lies on the directory itself, so that it leaves no file behind, and goes away with its
/// process at the latest.
class DirectoryLock {
 public:
  /// Waits for the lock for `patience` at most; nothing when it is still taken then or when the
  /// directory cannot be opened. On a file system that knows no such locks it is granted to all.
  static std::optional<DirectoryLock> acquire(const std::string& directory,
                                              std::chrono::milliseconds patience);

 private:
  explicit DirectoryLock(FileDescriptor directory) : directory_(std::move(directory)) {}

  FileDescriptor directory_;
};

}  // namespace vendril
