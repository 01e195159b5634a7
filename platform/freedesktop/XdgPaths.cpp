#include "platform/freedesktop/XdgPaths.h"

#include <pwd.h>

#include <cstdlib>
#include <sstream>

#include "platform/AsciiCase.h"

namespace vendril {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool isAbsolute(const std::string& path) {
  return path.starts_with('/');
}

/// The root stays the root: an empty path would stand for a directory that is not known.
std::string withoutSlashAtEnd(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

std::string homeInUserDatabase(uid_t user) {
  constexpr std::size_t kRoomForEntry = 65536;
  std::vector<char> room(kRoomForEntry);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(user, &entry, room.data(), room.size(), &found) != 0 || found == nullptr) {
    return "";
  }
  return withoutSlashAtEnd(entry.pw_dir);
}

std::string homeDirectory(uid_t user) {
  const std::string home = variable("HOME");
  return isAbsolute(home) ? withoutSlashAtEnd(home) : homeInUserDatabase(user);
}

std::string userDirectory(const char* name, const char* belowHome, uid_t user) {
  const std::string directory = variable(name);
  if (isAbsolute(directory)) {
    return withoutSlashAtEnd(directory);
  }
  const std::string home = homeDirectory(user);
  if (!isAbsolute(home)) {
    return "";
  }
  return home == "/" ? belowHome : home + belowHome;
}

std::vector<std::string> absoluteDirectories(const std::string& list) {
  std::vector<std::string> directories;
  for (const std::string& directory : splitNonEmpty(list, ':')) {
    if (isAbsolute(directory)) {
      directories.push_back(withoutSlashAtEnd(directory));
    }
  }
  return directories;
}

std::vector<std::string> systemDirectories(const char* name, const char* otherwise) {
  std::vector<std::string> directories = absoluteDirectories(variable(name));
  return directories.empty() ? absoluteDirectories(otherwise) : directories;
}

std::vector<std::string> lowerCaseDesktops() {
  std::vector<std::string> desktops = splitNonEmpty(variable("XDG_CURRENT_DESKTOP"), ':');
  // A desktop becomes part of a file's name, so it cannot lead into another directory.
  std::erase_if(desktops, [](const std::string& name) { return name.find('/') != name.npos; });
  for (std::string& name : desktops) {
    name = asciiLowercase(name);
  }
  return desktops;
}

}  // namespace

XdgPaths XdgPaths::fromEnvironment() {
  return {userConfigHome(), systemDirectories("XDG_CONFIG_DIRS", "/etc/xdg"),
          userDirectory("XDG_DATA_HOME", "/.local/share", getuid()),
          systemDirectories("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), lowerCaseDesktops()};
}

std::string userConfigHome(uid_t user) {
  return userDirectory("XDG_CONFIG_HOME", "/.config", user);
}

std::vector<std::string> splitNonEmpty(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    if (!part.empty()) {
      parts.push_back(part);
    }
  }
  return parts;
}

}  // namespace vendril
