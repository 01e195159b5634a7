#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/freedesktop/InstalledApplications.h"
#include "platform/freedesktop/MimeAppsList.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// The type under which applications register for a scheme; GIO looks schemes up in lower case.
std::string handlerType(std::string_view scheme);

/// Finds the applications for a type by the rules of the MIME applications associations, in GIO's
/// order. Nothing is kept between questions but what they share in a look.
class HandlerLookup {
 public:
  /// What the lists say about some types, and the applications, as they were when they were first
  /// asked for.
  class Look {
   public:
    explicit Look(std::set<std::string> types) : types_(std::move(types)) {}

    bool covers(const std::string& type) const { return types_.contains(type); }
    /// What `group` of the list at `path` gives for a type; nothing when the list is missing or
    /// does not parse.
    std::vector<std::string> applications(const std::string& path, const char* group,
                                          const std::string& type);
    bool isInstalled(const std::string& id, const InstalledApplications& applications);

   private:
    std::set<std::string> types_;
    std::map<std::string, std::optional<MimeAppsList>> lists_;
    std::map<std::string, bool> installed_;
  };

  explicit HandlerLookup(const XdgPaths& paths);

  const InstalledApplications& applications() const { return applications_; }

  /// The desktop file id of the default application of `type`: the first installed one that a list
  /// names as such, else the first one that is associated with it.
  std::optional<std::string> defaultApplication(const std::string& type) const;
  /// The same as of a look that covers `type`.
  std::optional<std::string> defaultApplication(const std::string& type, Look& look) const;

  /// The desktop file ids of all installed applications that are associated with `type`.
  std::vector<std::string> associatedApplications(const std::string& type) const;

 private:
  /// A directory with lists.
  struct Directory {
    std::string path;
    /// Its number among the directories of `applications_`; nothing for a configuration directory.
    std::optional<std::size_t> data;
  };

  struct Associations {
    std::vector<std::string> added;
    std::vector<std::string> removed;
  };

  std::optional<std::string> firstNamedDefault(const std::string& type, Look& look) const;
  /// Those that the lists name, installed or not.
  std::vector<std::string> associations(const std::string& type, Look& look) const;
  void addAssociations(const Directory& directory, const std::string& type, Look& look,
                       Associations& found) const;
  bool isMasked(const Directory& directory, const std::string& id) const;
  std::vector<std::string> defaultLists(const Directory& directory) const;

  InstalledApplications applications_;
  std::vector<Directory> directories_;
  std::vector<std::string> desktops_;
};

}  // namespace vendril
