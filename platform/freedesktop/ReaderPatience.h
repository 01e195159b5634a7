#pragma once

#include <atomic>

namespace vendril {

/// How long a log waits for its reader to make room: 100 ms, once. A reader that has let that time
/// pass gets no other until it takes something again, because a log that nobody reads must not stop
/// its writer. Any thread.
class ReaderPatience {
 public:
  /// Waits until `descriptor` can be written; false when the reader is not waited for any longer.
  bool waitForRoom(int descriptor) noexcept;

  /// The reader has taken something.
  void renew() noexcept { stuck_.store(false, std::memory_order_relaxed); }

 private:
  std::atomic<bool> stuck_ = false;
};

}  // namespace vendril
