#pragma once

#include <optional>
#include <string>

#include "tools/checks/Check.h"
#include "tools/checks/ConfigurationCheck.h"

namespace vendril::tools {

/// Where the agent's log goes.
struct LogFacts {
  enum class Directory { unnamed, usable, creatable, unusable };

  /// Whether there is a journal.
  bool hasJournal = true;
  /// The log directory that the client has published, and the log file in it.
  std::string directory;
  std::string file;
  Directory state = Directory::usable;
};

LogFacts logFacts(const ConfigurationFacts& configuration);

/// "ready", "will-be-created", "unnamed" or "not-writable".
Check logDirectoryCheck(const LogFacts& facts);

/// "available" or "absent".
Check journalCheck(const LogFacts& facts);

}  // namespace vendril::tools
