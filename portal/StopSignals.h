#pragma once

#include <functional>
#include <thread>

namespace vendril::portal {

/// Waits for SIGINT, SIGTERM or SIGHUP on a thread of its own, and calls a block once when one has
/// come. The first thread of the program makes it, before it starts any other: the signals are
/// blocked in that thread and in all that come after.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> block);
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  /// Ends the waiting, in which case the block is called too, if it has not been.
  ~StopSignals();

 private:
  std::jthread thread_;
};

}  // namespace vendril::portal
