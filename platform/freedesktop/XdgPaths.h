#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace vendril {

/// The directories and the desktops that the environment of a session names, by the rules of the
/// XDG Base Directory standard. Every directory is absolute; none but the root has a slash at its
/// end.
struct XdgPaths {
  /// Where the user's configuration lies; empty when neither XDG_CONFIG_HOME nor a home directory
  /// is known.
  std::string configHome;
  /// Where the system's configuration lies, the preferred directory first.
  std::vector<std::string> configDirs;
  /// Where the user's data lies; empty when neither XDG_DATA_HOME nor a home directory is known.
  std::string dataHome;
  /// Where the system's data lies, the preferred directory first.
  std::vector<std::string> dataDirs;
  /// The desktops of XDG_CURRENT_DESKTOP in lower case, as they prefix the names of their lists,
  /// the preferred one first.
  std::vector<std::string> currentDesktops;

  /// Reads the environment of this process, afresh on each call. A variable that names no absolute
  /// directory counts as unset.
  static XdgPaths fromEnvironment();
};

/// XdgPaths::configHome alone. The user database is asked about `user`, and only when neither
/// XDG_CONFIG_HOME nor HOME is an absolute path.
std::string userConfigHome(uid_t user = getuid());

/// The parts of `text` between the separators, without the empty ones.
std::vector<std::string> splitNonEmpty(const std::string& text, char separator);

}  // namespace vendril
