#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/InstalledApplications.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// Finds the applications for a type by the rules of the MIME applications associations, in GIO's
/// order. Nothing is kept: every question reads the lists and the entries that it needs.
class HandlerLookup {
 public:
  explicit HandlerLookup(const XdgPaths& paths);

  const InstalledApplications& applications() const { return applications_; }

  /// The desktop file id of the default application of `type`: the first installed one that a list
  /// names as such, else the first one that is associated with it.
  std::optional<std::string> defaultApplication(const std::string& type) const;

  /// The desktop file ids of all installed applications that are associated with `type`.
  std::vector<std::string> associatedApplications(const std::string& type) const;

 private:
  /// A directory with lists.
  struct Directory {
    std::string path;
    /// Its number among the directories of `applications_`; nothing for a configuration directory.
    std::optional<std::size_t> data;
  };

  class Lists;

  std::optional<std::string> firstNamedDefault(Lists& lists) const;
  /// Those that the lists name, installed or not.
  std::vector<std::string> associations(Lists& lists) const;
  void addAssociations(const Directory& directory, Lists& lists, std::vector<std::string>& added,
                       std::vector<std::string>& removed) const;
  bool isMasked(const Directory& directory, const std::string& id) const;
  std::vector<std::string> defaultLists(const Directory& directory) const;

  InstalledApplications applications_;
  std::vector<Directory> directories_;
  std::vector<std::string> desktops_;
};

}  // namespace vendril
