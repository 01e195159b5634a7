#include "platform/freedesktop/XdgUserDirectories.h"

#include "platform/FileSystem.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

std::vector<std::string> XdgUserDirectories::libraryDirectories() const {
  const std::string directory = userConfigHome(user_);
  if (directory.empty()) {
    return {};
  }
  return {appendPathComponent(directory, "brelto")};
}

}  // namespace vendril
