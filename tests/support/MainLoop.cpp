#include "support/MainLoop.h"

#include <glib.h>

namespace vendril {
namespace {

/// A condition may depend on what other threads and processes do, which wakes no loop: look again
/// this often.
constexpr guint kLookAgainMilliseconds = 5;

gboolean goOn(gpointer /*unused*/) {
  return G_SOURCE_CONTINUE;
}

}  // namespace

bool runMainLoopUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  const guint heartbeat = g_timeout_add(kLookAgainMilliseconds, goOn, nullptr);
  bool holds = condition();
  while (!holds && std::chrono::steady_clock::now() < end) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_remove(heartbeat);
  return holds;
}

}  // namespace vendril
