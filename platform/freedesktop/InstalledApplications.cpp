#include "platform/freedesktop/InstalledApplications.h"

#include <glib.h>
#include <sys/stat.h>

#include <algorithm>

namespace vendril {
namespace {

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

bool isDirectory(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// The file below `directory` that has the id `id`: each "-" may stand for itself or for the "/"
/// behind the name of a subdirectory.
std::optional<std::string> findEntryFile(const std::string& directory, const std::string& id) {
  std::string path = directory + "/" + id;
  if (exists(path)) {
    return path;
  }
  for (std::size_t dash = id.find('-'); dash != std::string::npos; dash = id.find('-', dash + 1)) {
    const std::string subdirectory = directory + "/" + id.substr(0, dash);
    if (dash > 0 && isDirectory(subdirectory)) {
      if (auto found = findEntryFile(subdirectory, id.substr(dash + 1))) {
        return found;
      }
    }
  }
  return std::nullopt;
}

/// An id cannot lead out of the directories, and stands in a list as it is: it holds nothing that
/// ends an element or a line there, or would have to be escaped.
bool isDesktopFileId(const std::string& id) {
  constexpr std::string_view kSuffix = ".desktop";
  return id.size() > kSuffix.size() && id.ends_with(kSuffix) &&
         id.find_first_of("/;\\") == std::string::npos &&
         std::none_of(id.begin(), id.end(), [](char c) { return g_ascii_iscntrl(c) != 0; });
}

}  // namespace

InstalledApplications::InstalledApplications(const XdgPaths& paths) {
  if (!paths.dataHome.empty()) {
    directories_.push_back(paths.dataHome + "/applications");
  }
  for (const std::string& directory : paths.dataDirs) {
    directories_.push_back(directory + "/applications");
  }
}

bool InstalledApplications::hasEntry(std::size_t index, const std::string& id) const {
  return isDesktopFileId(id) && findEntryFile(directories_[index], id);
}

std::optional<DesktopEntry> InstalledApplications::find(const std::string& id) const {
  if (!isDesktopFileId(id)) {
    return std::nullopt;
  }
  for (const std::string& directory : directories_) {
    const std::optional<std::string> path = findEntryFile(directory, id);
    std::optional<DesktopEntry> entry = path ? DesktopEntry::read(*path) : std::nullopt;
    if (entry && entry->isInstalledApplication()) {
      return entry;
    }
  }
  return std::nullopt;
}

bool InstalledApplications::contains(const std::string& id) const {
  const std::optional<DesktopEntry> entry = find(id);
  return entry && !entry->isHidden();
}

}  // namespace vendril
