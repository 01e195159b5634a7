#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "platform/OperationQueue.h"

namespace vendril {

/// Keeps operations until a test runs them on its own thread.
class FakeOperationQueue : public OperationQueue {
 public:
  void addOperation(Operation operation) override { operations_.push_back(std::move(operation)); }

  /// Runs what is waiting, what it adds included; tells how many operations ran.
  std::size_t runAll() {
    std::size_t count = 0;
    while (!operations_.empty()) {
      const std::vector<Operation> batch = std::exchange(operations_, {});
      for (const Operation& operation : batch) {
        operation();
        ++count;
      }
    }
    return count;
  }

 private:
  std::vector<Operation> operations_;
};

}  // namespace vendril
