#pragma once

#include <memory>
#include <utility>

namespace vendril {

/// A shared pointer that any number of threads may load and exchange at the same time. Whoever
/// drops the last copy destroys the object.
///
/// Built on the atomic functions for std::shared_ptr instead of std::atomic<std::shared_ptr>: the
/// latter, in libstdc++ 12, ends a load with a relaxed store, so that a load and a later exchange
/// are a data race, which ThreadSanitizer reports.
template <class T>
class AtomicSharedPointer {
 public:
  AtomicSharedPointer() = default;
  explicit AtomicSharedPointer(std::shared_ptr<T> pointer) : pointer_(std::move(pointer)) {}

  std::shared_ptr<T> load() const { return std::atomic_load(&pointer_); }

  /// Stores `next` and returns what was stored before.
  std::shared_ptr<T> exchange(std::shared_ptr<T> next) {
    return std::atomic_exchange(&pointer_, std::move(next));
  }

 private:
  std::shared_ptr<T> pointer_;
};

}  // namespace vendril
