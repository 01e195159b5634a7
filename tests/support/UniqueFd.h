#pragma once

#include <unistd.h>

#include <utility>

namespace vendril {

/// Owns a file descriptor.
class UniqueFd {
 public:
  explicit UniqueFd(int fd = -1) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  void reset() {
    if (fd_ >= 0) {
      ::close(std::exchange(fd_, -1));
    }
  }

 private:
  int fd_;
};

}  // namespace vendril
