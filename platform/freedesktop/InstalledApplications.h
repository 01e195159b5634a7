#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/DesktopEntry.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// The applications that have a desktop entry below the XDG data directories. An application is
/// named by its desktop file id: the path of the entry below "applications", ".desktop" included,
/// with each "/" turned into a "-". No id has a ";", a "\" or a control character: a list could not
/// hold it as it is. Nothing is kept: every question reads the disk.
class InstalledApplications {
 public:
  /// Looks below "applications" in the data directories of `paths`.
  explicit InstalledApplications(const XdgPaths& paths);

  /// The directories, the preferred one first.
  const std::vector<std::string>& directories() const { return directories_; }

  /// True when the directory number `index` has an entry with this id, of whatever content.
  bool hasEntry(std::size_t index, const std::string& id) const;

  /// The entry of the application `id`, from the first directory that has a working one; nothing
  /// when it is not installed. A hidden entry is found too.
  std::optional<DesktopEntry> find(const std::string& id) const;

  /// True when the application is installed and its entry is not hidden.
  bool contains(const std::string& id) const;

 private:
  std::vector<std::string> directories_;
};

}  // namespace vendril
