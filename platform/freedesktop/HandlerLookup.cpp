#include "platform/freedesktop/HandlerLookup.h"

#include <algorithm>

#include "platform/freedesktop/MimeAppsList.h"

namespace vendril {
namespace {

bool contains(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

/// What a list gives for a type; nothing when it is missing or does not parse.
std::vector<std::string> applicationsIn(const std::optional<MimeAppsList>& list, const char* group,
                                        const std::string& type) {
  return list ? list->applications(group, type) : std::vector<std::string>();
}

}  // namespace

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
  if (auto named = firstNamedDefault(type)) {
    return named;
  }
  for (const std::string& id : associations(type)) {
    if (applications_.find(id)) {
      return id;
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associatedApplications(const std::string& type) const {
  std::vector<std::string> ids = associations(type);
  std::erase_if(ids, [this](const std::string& id) { return !applications_.contains(id); });
  return ids;
}

std::optional<std::string> HandlerLookup::firstNamedDefault(const std::string& type) const {
  for (const Directory& directory : directories_) {
    for (const std::string& path : defaultLists(directory)) {
      for (const std::string& id :
           applicationsIn(MimeAppsList::read(path), MimeAppsList::kDefaultApplications, type)) {
        if (applications_.find(id)) {
          return id;
        }
      }
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associations(const std::string& type) const {
  std::vector<std::string> added;
  std::vector<std::string> removed;
  for (const Directory& directory : directories_) {
    addAssociations(directory, type, added, removed);
  }
  return added;
}

void HandlerLookup::addAssociations(const Directory& directory, const std::string& type,
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
  const auto list = MimeAppsList::read(directory.path + "/mimeapps.list");
  add(applicationsIn(list, MimeAppsList::kAddedAssociations, type));
  for (std::string& id : applicationsIn(list, MimeAppsList::kRemovedAssociations, type)) {
    removed.push_back(std::move(id));
  }
  if (directory.data) {
    add(applicationsIn(MimeAppsList::read(directory.path + "/mimeinfo.cache"),
                       MimeAppsList::kMimeCache, type));
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
