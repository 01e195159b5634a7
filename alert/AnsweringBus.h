#pragma once

#include <gio/gio.h>

namespace vendril {

/// The session bus, provided that it lets the process in within a second. The toolkit would wait
/// for a bus that hangs for ever, and nobody would see the alert: so where the bus does not answer,
/// this process has none from then on. To be made before the toolkit is set up. Main thread only.
class AnsweringBus {
 public:
  /// Runs the main context while it waits.
  AnsweringBus();
  AnsweringBus(const AnsweringBus&) = delete;
  AnsweringBus& operator=(const AnsweringBus&) = delete;
  ~AnsweringBus() { g_clear_object(&connection_); }

  /// Null when there is none.
  GDBusConnection* connection() const { return connection_; }

 private:
  static void onAnswer(GObject* source, GAsyncResult* result, gpointer bus);

  bool isAnswered() const;

  GDBusConnection* connection_ = nullptr;
  bool answered_ = false;
};

}  // namespace vendril
