#include "platform/freedesktop/HeapReturn.h"

#include <glib.h>
#include <malloc.h>

#include <atomic>

namespace vendril {
namespace {

constexpr guint kQuietSeconds = 1;

/// What has happened since the clock of this service was last looked at.
enum class Activity { noClock, quiet, worked };

std::atomic<Activity> activity{Activity::noClock};

gboolean returnHeapIfQuiet(gpointer /*unused*/) {
  auto seen = Activity::quiet;
  if (activity.compare_exchange_strong(seen, Activity::noClock)) {
    malloc_trim(0);
    return G_SOURCE_REMOVE;
  }
  activity = Activity::quiet;
  return G_SOURCE_CONTINUE;
}

#if !GLIB_CHECK_VERSION(2, 76, 0)
/// Until version 2.76 GLib has an allocator of its own for small objects, which keeps for ever what
/// a burst of messages on the bus has needed: 15 MB after 10,000 of them. It can be turned off only
/// before anything has used it, and the initializers of the shared libraries do.
__attribute__((no_sanitize("address", "thread", "undefined"))) void useOneHeap() {
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  g_slice_set_config(G_SLICE_CONFIG_ALWAYS_MALLOC, TRUE);
  G_GNUC_END_IGNORE_DEPRECATIONS
}

/// The loader runs what stands here before all initializers.
[[gnu::section(".preinit_array"), gnu::used]] void (*const kBeforeInitializers)() = useOneHeap;
#endif

}  // namespace

void returnHeapWhenQuiet() {
  if (activity.exchange(Activity::worked) == Activity::noClock) {
    g_timeout_add_seconds(kQuietSeconds, returnHeapIfQuiet, nullptr);
  }
}

}  // namespace vendril
