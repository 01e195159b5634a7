#include "platform/freedesktop/ThreadOperationQueue.h"

#include <glib.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vendril {
namespace {

void runGuarded(const OperationQueue::Operation& operation) {
  try {
    operation();
  } catch (const std::exception& exception) {
    g_warning("An operation ended with an exception: %s", exception.what());
  } catch (...) {
    g_warning("An operation ended with an unknown exception");
  }
}

}  // namespace

/// What the queue shares with its threads, each of which keeps it alive.
class ThreadOperationQueue::Workers : public std::enable_shared_from_this<Workers> {
 public:
  explicit Workers(std::size_t maxThreads) : maxThreads_(maxThreads) {}

  /// False when there is no thread that could run the operation, which is then left as it was.
  bool add(Operation& operation) {
    {
      const std::lock_guard lock(mutex_);
      if (!hasThreadForOneMore()) {
        return false;
      }
      pending_.push_back(std::move(operation));
    }
    changed_.notify_one();
    return true;
  }

  void finish() {
    for (std::thread& thread : close()) {
      if (thread.get_id() == std::this_thread::get_id()) {
        runPending();
        thread.detach();
      } else {
        thread.join();
      }
    }
  }

  void abandon() {
    const std::deque<Operation> dropped = takeAllPending();
    for (std::thread& thread : close()) {
      thread.detach();
    }
  }

 private:
  /// Once the queue closes, only a running operation can add one, and its own thread will run it.
  bool hasThreadForOneMore() {
    const bool wantsThread = pending_.size() >= idle_ && threads_.size() < maxThreads_;
    return closing_ || !wantsThread || startThread() || !threads_.empty();
  }

  bool startThread() {
    try {
      threads_.emplace_back([self = shared_from_this()] { self->work(); });
      return true;
    } catch (const std::system_error&) {
      return false;
    }
  }

  std::vector<std::thread> close() {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    changed_.notify_all();
    return std::exchange(threads_, {});
  }

  void work() {
    while (waitForOperation()) {
      runPending();
    }
  }

  /// False when the queue has closed and nothing is left to do.
  bool waitForOperation() {
    std::unique_lock lock(mutex_);
    ++idle_;
    changed_.wait(lock, [this] { return closing_ || !pending_.empty(); });
    --idle_;
    return !pending_.empty();
  }

  void runPending() {
    while (const Operation operation = takePending()) {
      runGuarded(operation);
    }
  }

  std::deque<Operation> takeAllPending() {
    const std::lock_guard lock(mutex_);
    return std::exchange(pending_, {});
  }

  Operation takePending() {
    const std::lock_guard lock(mutex_);
    if (pending_.empty()) {
      return {};
    }
    Operation operation = std::move(pending_.front());
    pending_.pop_front();
    return operation;
  }

  const std::size_t maxThreads_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Operation> pending_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool closing_ = false;
};

std::size_t ThreadOperationQueue::defaultThreads() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 4);
}

ThreadOperationQueue::ThreadOperationQueue(std::size_t maxThreads)
    : workers_(std::make_shared<Workers>(maxThreads)) {}

ThreadOperationQueue::~ThreadOperationQueue() {
  workers_->finish();
}

void ThreadOperationQueue::addOperation(Operation operation) {
  if (!workers_->add(operation)) {
    runGuarded(operation);
  }
}

void ThreadOperationQueue::abandon() {
  workers_->abandon();
}

}  // namespace vendril
