#include "platform/freedesktop/XdgUserDirectories.h"

#include <pwd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace vendril {
namespace {

using Path = std::filesystem::path;

std::optional<Path> absolutePath(const char* path) {
  return path != nullptr && *path == '/' ? std::optional<Path>(path) : std::nullopt;
}

std::optional<Path> homeInUserDatabase(uid_t user) {
  constexpr std::size_t kRoomForEntry = 65536;
  std::vector<char> room(kRoomForEntry);
  passwd entry{};
  passwd* found = nullptr;
  getpwuid_r(user, &entry, room.data(), room.size(), &found);
  return found != nullptr ? absolutePath(found->pw_dir) : std::nullopt;
}

std::optional<Path> configurationDirectory(uid_t user) {
  if (auto directory = absolutePath(std::getenv("XDG_CONFIG_HOME"))) {
    return directory;
  }
  auto home = absolutePath(std::getenv("HOME"));
  if (!home) {
    home = homeInUserDatabase(user);
  }
  return home ? std::optional(*home / ".config") : std::nullopt;
}

}  // namespace

std::vector<std::string> XdgUserDirectories::libraryDirectories() const {
  const std::optional<Path> directory = configurationDirectory(user_);
  if (!directory) {
    return {};
  }
  return {*directory / "brelto"};
}

}  // namespace vendril
