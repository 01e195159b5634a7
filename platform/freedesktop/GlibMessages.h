#pragma once

#include "platform/SystemLog.h"

namespace vendril {

/// Sends what GLib and the libraries on it have to say, each message with its domain, to the
/// system's log for as long as it lives. Left to themselves they write to the journal or to
/// standard error, and wait where either is stopped. What GLib would not show stays hidden. One at
/// a time.
class GlibMessages {
 public:
  /// `log` outlives this object.
  explicit GlibMessages(SystemLog& log);
  GlibMessages(const GlibMessages&) = delete;
  GlibMessages& operator=(const GlibMessages&) = delete;
  ~GlibMessages();
};

}  // namespace vendril
