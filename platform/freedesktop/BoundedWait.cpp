#include "platform/freedesktop/BoundedWait.h"

#include "platform/freedesktop/GlibSource.h"

namespace vendril {

BoundedWait::BoundedWait(std::chrono::milliseconds limit)
    : end_(std::chrono::steady_clock::now() + limit),
      limit_(limit),
      cancellable_(g_cancellable_new()),
      outcome_(std::make_shared<Outcome>()) {}

void BoundedWait::finish(GObject* /*source*/, GAsyncResult* result, gpointer userData) {
  const std::unique_ptr<std::shared_ptr<Outcome>> outcome(
      static_cast<std::shared_ptr<Outcome>*>(userData));
  (*outcome)->result.reset(G_ASYNC_RESULT(g_object_ref(result)));
}

GAsyncResult* BoundedWait::result() {
  const auto wakeUp = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
  const GlibSource alarm(g_timeout_add(static_cast<guint>(limit_.count()), wakeUp, nullptr));
  while (!outcome_->result && std::chrono::steady_clock::now() < end_) {
    g_main_context_iteration(nullptr, TRUE);
  }
  if (!outcome_->result) {
    g_cancellable_cancel(cancellable_.get());
  }
  return outcome_->result.get();
}

}  // namespace vendril
