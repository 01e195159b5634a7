#pragma once

#include <functional>

namespace vendril {

/// Stands in for fsync while it lives: `watch` is given the descriptor, and answers whether the
/// call succeeds; a failure is EIO. Works in programs whose linker wraps fsync.
class WatchedFsync {
 public:
  explicit WatchedFsync(std::function<bool(int descriptor)> watch);
  WatchedFsync(const WatchedFsync&) = delete;
  WatchedFsync& operator=(const WatchedFsync&) = delete;
  ~WatchedFsync();
};

}  // namespace vendril
