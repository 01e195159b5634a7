#include "platform/freedesktop/AutostartDirectories.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

namespace vendril {
namespace {

constexpr std::string_view kSuffix = ".desktop";

std::string pathIn(const std::string& directory, const std::string& name) {
  return directory + "/" + name;
}

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

bool isNullDevice(const struct stat& status) {
  // The numbers are fixed by Linux's list of devices.
  return S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

AutostartFile readFileAt(const std::string& directory, const std::string& name, bool isUsers) {
  AutostartFile file;
  file.name = name;
  file.path = pathIn(directory, name);
  file.isUsers = isUsers;
  struct stat status {};
  if (stat(file.path.c_str(), &status) == 0) {
    file.modified = status.st_mtim;
    file.isBlank = isNullDevice(status) || (S_ISREG(status.st_mode) && status.st_size == 0);
    file.entry = DesktopEntry::read(file.path);
  }
  return file;
}

/// The names of the files in `directory` that could be entries; none when it cannot be read.
std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  using Directory = std::unique_ptr<GDir, ReleaseWith<g_dir_close>>;
  const Directory open(g_dir_open(directory.c_str(), 0, nullptr));
  while (const char* name = open ? g_dir_read_name(open.get()) : nullptr) {
    if (std::string_view(name).ends_with(kSuffix)) {
      names.emplace_back(name);
    }
  }
  return names;
}

std::pair<time_t, long> timeOf(const AutostartFile& file) {
  return {file.modified.tv_sec, file.modified.tv_nsec};
}

/// The first moment after `time`.
timespec after(timespec time) {
  constexpr long kNanosecondsPerSecond = 1'000'000'000;
  ++time.tv_nsec;
  return time.tv_nsec < kNanosecondsPerSecond ? time : timespec{time.tv_sec + 1, 0};
}

/// The user's files in their order.
std::vector<AutostartFile> readUsers(const std::string& directory,
                                     const std::vector<std::string>& names) {
  std::vector<AutostartFile> files;
  files.reserve(names.size());
  for (const std::string& name : names) {
    files.push_back(readFileAt(directory, name, true));
  }
  std::sort(files.begin(), files.end(), [](const AutostartFile& one, const AutostartFile& other) {
    return std::tuple(timeOf(one), one.name) < std::tuple(timeOf(other), other.name);
  });
  return files;
}

}  // namespace

AutostartDirectories::AutostartDirectories(const XdgPaths& paths) {
  constexpr const char* kName = "/autostart";
  if (!paths.configHome.empty()) {
    users_ = paths.configHome + kName;
  }
  for (const std::string& directory : paths.configDirs) {
    systems_.push_back(directory + kName);
  }
}

std::vector<AutostartFile> AutostartDirectories::files() const {
  const std::vector<std::string> usersNames = namesIn(users_);
  std::set<std::string> taken(usersNames.begin(), usersNames.end());
  std::vector<AutostartFile> files;
  for (const std::string& directory : systems_) {
    for (const std::string& name : namesIn(directory)) {
      if (taken.insert(name).second) {
        files.push_back(readFileAt(directory, name, false));
      }
    }
  }
  std::sort(files.begin(), files.end(),
            [](const auto& one, const auto& other) { return one.name < other.name; });
  std::vector<AutostartFile> users = readUsers(users_, usersNames);
  std::move(users.begin(), users.end(), std::back_inserter(files));
  return files;
}

std::optional<AutostartFile> AutostartDirectories::find(const std::string& name) const {
  return exists(pathIn(users_, name)) ? readFileAt(users_, name, true) : findSystems(name);
}

std::optional<AutostartFile> AutostartDirectories::findSystems(const std::string& name) const {
  for (const std::string& directory : systems_) {
    if (exists(pathIn(directory, name))) {
      return readFileAt(directory, name, false);
    }
  }
  return std::nullopt;
}

void AutostartDirectories::makeNewest(const std::string& name) const {
  const std::vector<AutostartFile> users = readUsers(users_, namesIn(users_));
  if (users.empty() || users.back().name == name) {
    return;
  }
  const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, after(users.back().modified)};
  utimensat(AT_FDCWD, pathIn(users_, name).c_str(), times.data(), 0);
}

}  // namespace vendril
