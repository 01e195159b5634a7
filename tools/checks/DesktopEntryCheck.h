#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// The desktop entry through which the desktop finds the agent.
struct DesktopEntryFacts {
  /// An entry with the agent's id in one of the data directories.
  struct Entry {
    std::string path;
    bool parses = true;
    bool isHidden = false;
    /// The program that it starts; nothing, and why, when there is none.
    std::optional<std::string> program;
    std::string programError;
    /// The schemes of the agent that it does not declare.
    std::vector<std::string> undeclared;
    /// Whether the directory's cache names it for each scheme.
    bool isCached = true;
  };

  /// The agent's program.
  std::string program;
  /// The entry that counts: the first one of the data directories, in their order.
  std::optional<Entry> entry;
  /// The entry of the installation itself, whether it is there, and whether its directory is among
  /// the data directories.
  std::string ownPath;
  bool isOwnThere = true;
  /// Where the user's own entries lie.
  std::string usersDirectory;
  std::string reinstallCommand;
};

DesktopEntryFacts desktopEntryFacts(const Surroundings& surroundings,
                                    const std::vector<std::string>& schemes);

/// "valid", "missing", "invisible", "malformed", "hidden", "program-missing", "other-program",
/// "scheme-missing" or "not-cached".
Check desktopEntryCheck(const DesktopEntryFacts& facts);

}  // namespace vendril::tools
