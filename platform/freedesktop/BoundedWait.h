#pragma once

#include <gio/gio.h>

#include <chrono>
#include <memory>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// Waits a bounded time for one asynchronous GIO operation. It runs the main context meanwhile, so
/// it is for the moments before anything is there to be dispatched and after everything has been.
/// Main thread only.
class BoundedWait {
 public:
  explicit BoundedWait(std::chrono::milliseconds limit);

  /// What the operation is started with: its cancellable, its callback, and the data of that one
  /// callback.
  GCancellable* cancellable() const { return cancellable_.get(); }
  static void finish(GObject* source, GAsyncResult* result, gpointer userData);
  gpointer userData() const { return new std::shared_ptr<Outcome>(outcome_); }

  /// The result to finish the operation with, owned by this object. Null when the limit has passed;
  /// then the operation is cancelled, and what still comes of it is dropped.
  GAsyncResult* result();

 private:
  /// Where the operation leaves its result; it may outlive the one who waits.
  struct Outcome {
    GObjectPtr<GAsyncResult> result;
  };

  std::chrono::steady_clock::time_point end_;
  std::chrono::milliseconds limit_;
  GObjectPtr<GCancellable> cancellable_;
  std::shared_ptr<Outcome> outcome_;
};

}  // namespace vendril
