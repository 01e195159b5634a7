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

/// Whether the bus may start a process when there is none.
enum class Activation { never, whenNeeded };

/// What became of it; when it is not done, the bus's error, and whether that is that the limit has
/// passed.
struct HandoverAnswer {
  Handover outcome;
  std::string error;
  bool isTimeout = false;
};

/// Hands `links` to the process that owns `busName`, or only activates it when there are none, and
/// waits up to `limit` for its answer. Does not run the main context.
HandoverAnswer openOnBus(GDBusConnection* connection, const std::string& busName,
                         const std::vector<std::string>& links, std::chrono::milliseconds limit,
                         Activation activation);

/// The same for a name that somebody owns; starts no process.
Handover handOver(GDBusConnection* connection, const std::string& busName,
                  const std::vector<std::string>& links, std::chrono::milliseconds limit);

}  // namespace vendril
