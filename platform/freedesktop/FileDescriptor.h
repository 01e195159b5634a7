#pragma once

#include <unistd.h>

#include <utility>

namespace vendril {

/// Owns an open file and closes it.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, kNone)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  /// False when opening the file failed.
  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

  /// Closes the file early; false when the system reports an error of an earlier write.
  bool close() {
    const int descriptor = std::exchange(descriptor_, kNone);
    return descriptor < 0 || ::close(descriptor) == 0;
  }

 private:
  static constexpr int kNone = -1;

  int descriptor_;
};

}  // namespace vendril
