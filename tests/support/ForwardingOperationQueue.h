#pragma once

#include <utility>

#include "platform/OperationQueue.h"

namespace vendril {

/// Hands every operation on to another OperationQueue, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingOperationQueue : public OperationQueue {
 public:
  explicit ForwardingOperationQueue(OperationQueue& target) : target_(target) {}

  void addOperation(Operation operation) override { target_.addOperation(std::move(operation)); }

 private:
  OperationQueue& target_;
};

}  // namespace vendril
