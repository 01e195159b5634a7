#include "platform/freedesktop/HandlerLookup.h"

#include <algorithm>
#include <map>

#include "platform/freedesktop/MimeAppsList.h"

namespace vendril {
namespace {

bool contains(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

/// The lists as they are when one question is asked, as far as they concern its type. Each is read
/// once, although it counts for the defaults and again for the associations.
class HandlerLookup::Lists {
 public:
  explicit Lists(const std::string& type) : type_(type) {}

  /// What `group` of the list at `path` gives for the type; nothing when the list is missing or
  /// does not parse.
  std::vector<std::string> applications(const std::string& path, const char* group) {
    const auto [entry, isNew] = lists_.try_emplace(path);
    if (isNew) {
      entry->second = MimeAppsList::readAbout(type_, path);
    }
    return entry->second ? entry->second->applications(group, type_) : std::vector<std::string>();
  }

 private:
  const std::string& type_;
  std::map<std::string, std::optional<MimeAppsList>> lists_;
};

HandlerLookup::HandlerLookup(const XdgPaths& paths)
    : applications_(paths), desktops_(paths.currentDesktops) {
  if (!paths.configHome.empty()) {
    directories_.push_back({paths.configHome, std::nullopt});
  }
  for (const std::string& path : paths.configDirs) {
    directories_.push_back({path, std::nullopt});
  }
  for (std::size_t i = 0; i < applications_.directories().size(); ++i) {
    directories_.push_back({applications_.directories()[i], i});
  }
}

std::optional<std::string> HandlerLookup::defaultApplication(const std::string& type) const {
  Lists lists(type);
  if (auto named = firstNamedDefault(lists)) {
    return named;
  }
  for (const std::string& id : associations(lists)) {
    if (applications_.find(id)) {
      return id;
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associatedApplications(const std::string& type) const {
  Lists lists(type);
  std::vector<std::string> ids = associations(lists);
  std::erase_if(ids, [this](const std::string& id) { return !applications_.contains(id); });
  return ids;
}

std::optional<std::string> HandlerLookup::firstNamedDefault(Lists& lists) const {
  for (const Directory& directory : directories_) {
    for (const std::string& path : defaultLists(directory)) {
      for (const std::string& id : lists.applications(path, MimeAppsList::kDefaultApplications)) {
        if (applications_.find(id)) {
          return id;
        }
      }
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associations(Lists& lists) const {
  std::vector<std::string> added;
  std::vector<std::string> removed;
  for (const Directory& directory : directories_) {
    addAssociations(directory, lists, added, removed);
  }
  return added;
}

void HandlerLookup::addAssociations(const Directory& directory, Lists& lists,
                                    std::vector<std::string>& added,
                                    std::vector<std::string>& removed) const {
  const auto add = [&](const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      if (!contains(added, id) && !contains(removed, id) && !isMasked(directory, id)) {
        added.push_back(id);
      }
    }
  };
  // Only the list without a desktop's name may add or remove; the cache comes behind it.
  const std::string list = directory.path + "/mimeapps.list";
  add(lists.applications(list, MimeAppsList::kAddedAssociations));
  for (std::string& id : lists.applications(list, MimeAppsList::kRemovedAssociations)) {
    removed.push_back(std::move(id));
  }
  if (directory.data) {
    add(lists.applications(directory.path + "/mimeinfo.cache", MimeAppsList::kMimeCache));
  }
}

bool HandlerLookup::isMasked(const Directory& directory, const std::string& id) const {
  for (std::size_t i = 0; i < directory.data.value_or(0); ++i) {
    if (applications_.hasEntry(i, id)) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> HandlerLookup::defaultLists(const Directory& directory) const {
  std::vector<std::string> paths;
  for (const std::string& desktop : desktops_) {
    paths.push_back(directory.path + "/" + desktop + "-mimeapps.list");
  }
  paths.push_back(directory.path + "/mimeapps.list");
  if (directory.data) {
    // An older name that GIO still reads.
    paths.push_back(directory.path + "/defaults.list");
  }
  return paths;
}

}  // namespace vendril
