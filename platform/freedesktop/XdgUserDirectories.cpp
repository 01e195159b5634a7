#include "platform/freedesktop/XdgUserDirectories.h"

#include <filesystem>

#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

std::vector<std::string> XdgUserDirectories::libraryDirectories() const {
  const std::filesystem::path directory = userConfigHome(user_);
  if (directory.empty()) {
    return {};
  }
  return {directory / "brelto"};
}

}  // namespace vendril
