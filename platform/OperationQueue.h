#pragma once

#include <functional>

namespace vendril {

/// Runs operations on worker threads, several at once when the system sees fit. Operations may be
/// added from any thread, from inside an operation too. An exception does not leave an operation.
class OperationQueue {
 public:
  using Operation = std::function<void()>;

  virtual ~OperationQueue() = default;

  virtual void addOperation(Operation operation) = 0;
};

}  // namespace vendril
