#pragma once

#include <cstddef>
#include <memory>

#include "platform/OperationQueue.h"

namespace vendril {

/// An operation queue on threads of its own. A thread is made when an operation finds none free,
/// up to a limit, and then stays, blocked while there is nothing to do. What an operation throws is
/// dropped with a warning. When not even one thread can be made, `addOperation` runs the operation
/// itself: late is better than never.
class ThreadOperationQueue : public OperationQueue {
 public:
  /// As many threads as there are processors, within 2 to 4: operations are short, and two let one
  /// go on while another waits for a disk.
  static std::size_t defaultThreads();

  explicit ThreadOperationQueue(std::size_t maxThreads = defaultThreads());
  ThreadOperationQueue(const ThreadOperationQueue&) = delete;
  ThreadOperationQueue& operator=(const ThreadOperationQueue&) = delete;
  /// Returns when every operation has ended, pending ones included. An operation may drop the last
  /// reference to its own queue; that one operation alone then outlives the queue.
  ~ThreadOperationQueue() override;

  void addOperation(Operation operation) override;

  /// Drops the pending operations and lets go of the threads without waiting for them; what their
  /// operations have captured stays alive until they end. For operations that may never end. No
  /// operation may be added afterwards.
  void abandon();

 private:
  class Workers;

  std::shared_ptr<Workers> workers_;
};

}  // namespace vendril
