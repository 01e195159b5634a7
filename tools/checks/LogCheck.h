#pragma once

#include <optional>
#include <string>

#include "tools/checks/Check.h"
#include "tools/checks/ConfigurationCheck.h"

namespace vendril::tools {

/// Where the agent's log goes.
struct LogFacts {
  enum class Directory { unnamed, usable, creatable, unusable };

  /// Why an unusable directory is: the nearest thing on the way to it that is there.
  struct Obstacle {
    std::string path;
    bool isFolder = true;
    /// Whether the user may change its permissions or, of what is no folder, its name.
    bool isChangeable = true;
  };

  /// Whether there is a journal.
  bool hasJournal = true;
  /// The log directory that the client has published, and the log file in it.
  std::string directory;
  std::string file;
  Directory state = Directory::usable;
  /// Nothing unless the directory is unusable, and for one whose path is relative.
  std::optional<Obstacle> obstacle;
};

LogFacts logFacts(const ConfigurationFacts& configuration);

/// "ready", "will-be-created", "unnamed" or "not-writable".
Check logDirectoryCheck(const LogFacts& facts);

/// "available" or "absent".
Check journalCheck(const LogFacts& facts);

}  // namespace vendril::tools
