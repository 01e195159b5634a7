#pragma once

#include <gio/gio.h>

#include <chrono>
#include <string>
#include <vector>

namespace vendril {

/// What became of handing links over.
enum class Handover {
  /// The running process has handled the links.
  done,
  /// It ended before it answered; nobody may have seen the links.
  ownerGone,
  /// The bus ended; nobody may have seen the links.
  busGone,
  /// It does not answer, or refuses.
  unanswered
};

/// Hands `links` to the process that owns `busName`, or only activates it when there are none, and
/// waits up to `limit` for its answer. Never starts a process. Does not run the main context.
Handover handOver(GDBusConnection* connection, const std::string& busName,
                  const std::vector<std::string>& links, std::chrono::milliseconds limit);

}  // namespace vendril
