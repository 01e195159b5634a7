#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <latch>
#include <stdexcept>
#include <thread>

#include "platform/freedesktop/ThreadOperationQueue.h"
#include "support/ThreadActivity.h"
#include "support/ThreadsRefused.h"

namespace vendril {
namespace {

using namespace std::chrono_literals;

constexpr auto kDeadline = 20s;

TEST(ThreadOperationQueue, RunsOperationsOnAnotherThread) {
  std::promise<std::thread::id> ranOn;
  ThreadOperationQueue queue;
  queue.addOperation([&] { ranOn.set_value(std::this_thread::get_id()); });
  EXPECT_NE(ranOn.get_future().get(), std::this_thread::get_id());
}

TEST(ThreadOperationQueue, RunsSeveralOperationsAtOnce) {
  std::latch bothRun(2);
  ThreadOperationQueue queue(2);
  for (int i = 0; i < 2; ++i) {
    queue.addOperation([&] { bothRun.arrive_and_wait(); });
  }
  bothRun.wait();
}

TEST(ThreadOperationQueue, NeverUsesMoreThreadsThanItsLimit) {
  constexpr int kLimit = 3;
  std::latch end(1);
  ThreadOperationQueue queue(kLimit);
  const auto addBlocked = [&](int count) {
    for (int i = 0; i < count; ++i) {
      queue.addOperation([&] { end.wait(); });
    }
  };
  const std::size_t before = threadCount();
  addBlocked(kLimit);
  const std::size_t atTheLimit = threadCount();
  EXPECT_GE(atTheLimit, before + kLimit);
  addBlocked(10);
  EXPECT_EQ(threadCount(), atTheLimit);
  end.count_down();
}

TEST(ThreadOperationQueue, HasNoThreadBeforeItsFirstOperation) {
  const std::size_t before = threadCount();
  const ThreadOperationQueue queue;
  EXPECT_EQ(threadCount(), before);
}

TEST(ThreadOperationQueue, ChoosesTwoToFourThreadsByItself) {
  EXPECT_GE(ThreadOperationQueue::defaultThreads(), 2U);
  EXPECT_LE(ThreadOperationQueue::defaultThreads(), 4U);
}

TEST(ThreadOperationQueue, RunsPendingOperationsBeforeItsDestructionEnds) {
  std::atomic<int> ran = 0;
  {
    ThreadOperationQueue queue(2);
    for (int i = 0; i < 1000; ++i) {
      queue.addOperation([&] { ++ran; });
    }
  }
  EXPECT_EQ(ran, 1000);
}

TEST(ThreadOperationQueue, RunsWhatAnOperationAddsDuringDestruction) {
  std::atomic<int> ran = 0;
  {
    ThreadOperationQueue queue(1);
    queue.addOperation([&] {
      ++ran;
      queue.addOperation([&] {
        ++ran;
        queue.addOperation([&] { ++ran; });
      });
    });
  }
  EXPECT_EQ(ran, 3);
}

TEST(ThreadOperationQueue, GoesOnAfterAnException) {
  std::promise<void> ran;
  ThreadOperationQueue queue(1);
  queue.addOperation([] { throw std::runtime_error("on purpose"); });
  queue.addOperation([] { throw 1; });
  queue.addOperation([&] { ran.set_value(); });
  EXPECT_EQ(ran.get_future().wait_for(kDeadline), std::future_status::ready);
}

TEST(ThreadOperationQueue, MayLoseItsLastReferenceInOneOfItsOperations) {
  std::promise<void> mayStart;
  const auto pendingRan = std::make_shared<std::promise<void>>();
  {
    const auto queue = std::make_shared<ThreadOperationQueue>(1);
    queue->addOperation([last = queue, start = mayStart.get_future().share()]() mutable {
      start.wait();
      last.reset();
    });
    queue->addOperation([pendingRan] { pendingRan->set_value(); });
  }
  mayStart.set_value();
  EXPECT_EQ(pendingRan->get_future().wait_for(kDeadline), std::future_status::ready);
}

TEST(ThreadOperationQueue, RunsOperationsItselfWhenNoThreadCanBeMade) {
  ThreadOperationQueue queue;
  std::thread::id ranOn;
  {
    const ThreadsRefused refused;
    queue.addOperation([&] { ranOn = std::this_thread::get_id(); });
  }
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(ThreadOperationQueue, WaitsForNothingOnceAbandoned) {
  const auto started = std::make_shared<std::promise<void>>();
  const auto ended = std::make_shared<std::promise<void>>();
  std::promise<void> mayEnd;
  const auto pending = std::make_shared<int>();
  {
    ThreadOperationQueue queue(1);
    queue.addOperation([started, ended, end = mayEnd.get_future().share()] {
      started->set_value();
      end.wait();
      ended->set_value();
    });
    started->get_future().wait();
    queue.addOperation([pending] { ADD_FAILURE() << "a dropped operation ran"; });
    queue.abandon();
    EXPECT_EQ(pending.use_count(), 1);
  }
  mayEnd.set_value();
  EXPECT_EQ(ended->get_future().wait_for(kDeadline), std::future_status::ready);
}

TEST(ThreadOperationQueue, SleepsWithoutATimerWhenIdle) {
  std::promise<pid_t> worker;
  ThreadOperationQueue queue(1);
  queue.addOperation([&] { worker.set_value(gettid()); });
  const pid_t thread = worker.get_future().get();
  ASSERT_TRUE(waitUntilAsleep(thread));
  const long before = contextSwitches(thread);
  std::this_thread::sleep_for(500ms);
  EXPECT_EQ(contextSwitches(thread), before);
}

}  // namespace
}  // namespace vendril
