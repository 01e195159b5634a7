#pragma once

#include <gio/gio.h>

namespace vendril {

/// Follows the desktop's choice between a light and a dark style, as the settings portal tells it
/// (namespace org.freedesktop.appearance, key color-scheme), for as long as it lives. Where there
/// is no portal, the toolkit's own settings stand. Needs an opened display; main thread only.
class DarkStyle {
 public:
  /// Waits for the first answer, but never for longer than a second: an answer that comes later is
  /// still followed. Runs the main context meanwhile.
  DarkStyle();
  DarkStyle(const DarkStyle&) = delete;
  DarkStyle& operator=(const DarkStyle&) = delete;
  ~DarkStyle();

 private:
  static void connected(GObject* source, GAsyncResult* result, gpointer style);
  static void answered(GObject* bus, GAsyncResult* result, gpointer style);

  void ask();
  void waitForAnswer() const;

  /// Cancelled when this object goes away: nothing is followed any more then.
  GCancellable* end_;
  GDBusConnection* bus_ = nullptr;
  guint subscription_ = 0;
  bool settled_ = false;
};

}  // namespace vendril
