#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "platform/freedesktop/HeapReturn.h"
#include "support/MainLoop.h"

namespace vendril {
namespace {

/// The memory that this process keeps to itself and has written to, in KiB.
long privateDirtyKib() {
  std::ifstream file("/proc/self/smaps_rollup");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Private_Dirty:")) {
      return std::stol(line.substr(line.find(':') + 1));
    }
  }
  return -1;
}

/// Fills and frees a heap of some 20 MiB, but for a block at its end that keeps the C library from
/// giving the rest back by itself.
void* leaveLargeHeap() {
  std::vector<void*> blocks(20000);
  for (void*& block : blocks) {
    block = g_malloc0(1000);
  }
  void* const last = g_malloc0(1000);
  for (void* const block : blocks) {
    g_free(block);
  }
  return last;
}

bool mainContextHasTimer() {
  GMainContext* const context = g_main_context_default();
  int priority = 0;
  int timeout = -1;
  g_main_context_acquire(context);
  g_main_context_prepare(context, &priority);
  g_main_context_query(context, G_MAXINT, &timeout, nullptr, 0);
  g_main_context_release(context);
  return timeout >= 0;
}

TEST(HeapReturn, FreeMemoryGoesBackToTheSystemOnceThereIsNoMoreWork) {
#if defined(VENDRIL_ASAN) || defined(VENDRIL_TSAN)
  GTEST_SKIP() << "The sanitizers have a heap of their own";
#endif
  const long before = privateDirtyKib();
  void* const last = leaveLargeHeap();
  const long large = privateDirtyKib();
  ASSERT_GT(large, before + 10000) << "the heap was given back without being asked for";
  returnHeapWhenQuiet();
  EXPECT_TRUE(runMainLoopUntil([&] { return privateDirtyKib() < before + (large - before) / 4; }))
      << before << " KiB, then " << large << ", now " << privateDirtyKib();
  g_free(last);
}

TEST(HeapReturn, NoTimerIsLeftOnceTheHeapIsReturned) {
  ASSERT_FALSE(mainContextHasTimer());
  returnHeapWhenQuiet();
  EXPECT_TRUE(mainContextHasTimer());
  for (int turn = 0; turn < 10 && mainContextHasTimer(); ++turn) {
    g_main_context_iteration(nullptr, TRUE);
  }
  EXPECT_FALSE(mainContextHasTimer());
}

#if !GLIB_CHECK_VERSION(2, 76, 0)
TEST(HeapReturn, SmallObjectsOfGlibAreInTheSameHeap) {
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  EXPECT_EQ(g_slice_get_config(G_SLICE_CONFIG_ALWAYS_MALLOC), TRUE);
  G_GNUC_END_IGNORE_DEPRECATIONS
}
#endif

}  // namespace
}  // namespace vendril
