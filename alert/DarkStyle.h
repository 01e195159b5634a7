#pragma once

#include <gio/gio.h>

namespace vendril {

/// Follows the desktop's choice between a light and a dark style, as the settings portal tells it
/// (namespace org.freedesktop.appearance, key color-scheme), for as long as it lives. Where there
/// is no portal, the toolkit's own settings stand. Needs an opened display.
class DarkStyle {
 public:
  /// `bus`, which may be null, outlives this object.
  explicit DarkStyle(GDBusConnection* bus);
  DarkStyle(const DarkStyle&) = delete;
  DarkStyle& operator=(const DarkStyle&) = delete;
  ~DarkStyle();

 private:
  GDBusConnection* bus_;
  guint subscription_ = 0;
};

}  // namespace vendril
