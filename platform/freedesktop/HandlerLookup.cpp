#include "platform/freedesktop/HandlerLookup.h"

#include <algorithm>

#include "platform/AsciiCase.h"

namespace vendril {
namespace {

bool contains(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

// Each list is read once, although it counts for the defaults and again for the associations.
std::vector<std::string> HandlerLookup::Look::applications(const std::string& path,
                                                           const char* group,
                                                           const std::string& type) {
  const auto [entry, isNew] = lists_.try_emplace(path);
  if (isNew) {
    entry->second = MimeAppsList::readAbout(types_, path);
  }
  return entry->second ? entry->second->applications(group, type) : std::vector<std::string>();
}

bool HandlerLookup::Look::isInstalled(const std::string& id,
                                      const InstalledApplications& applications) {
  const auto [entry, isNew] = installed_.try_emplace(id);
  if (isNew) {
    entry->second = applications.find(id).has_value();
  }
  return entry->second;
}

std::string handlerType(std::string_view scheme) {
  return "x-scheme-handler/" + asciiLowercase(scheme);
}

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
  Look look({type});
  return defaultApplication(type, look);
}

std::optional<std::string> HandlerLookup::defaultApplication(const std::string& type,
                                                             Look& look) const {
  if (auto named = firstNamedDefault(type, look)) {
    return named;
  }
  for (const std::string& id : associations(type, look)) {
    if (look.isInstalled(id, applications_)) {
      return id;
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associatedApplications(const std::string& type) const {
  Look look({type});
  std::vector<std::string> ids = associations(type, look);
  std::erase_if(ids, [this](const std::string& id) { return !applications_.contains(id); });
  return ids;
}

std::optional<std::string> HandlerLookup::firstNamedDefault(const std::string& type,
                                                            Look& look) const {
  for (const Directory& directory : directories_) {
    for (const std::string& path : defaultLists(directory)) {
      for (const std::string& id :
           look.applications(path, MimeAppsList::kDefaultApplications, type)) {
        if (look.isInstalled(id, applications_)) {
          return id;
        }
      }
    }
  }
  return std::nullopt;
}

std::vector<std::string> HandlerLookup::associations(const std::string& type, Look& look) const {
  Associations found;
  for (const Directory& directory : directories_) {
    addAssociations(directory, type, look, found);
  }
  return std::move(found.added);
}

void HandlerLookup::addAssociations(const Directory& directory, const std::string& type, Look& look,
                                    Associations& found) const {
  const auto add = [&](const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      if (!contains(found.added, id) && !contains(found.removed, id) && !isMasked(directory, id)) {
        found.added.push_back(id);
      }
    }
  };
  // Only the list without a desktop's name may add or remove; the cache comes behind it.
  const std::string list = directory.path + "/mimeapps.list";
  add(look.applications(list, MimeAppsList::kAddedAssociations, type));
  for (std::string& id : look.applications(list, MimeAppsList::kRemovedAssociations, type)) {
    found.removed.push_back(std::move(id));
  }
  if (directory.data) {
    add(look.applications(directory.path + "/mimeinfo.cache", MimeAppsList::kMimeCache, type));
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
