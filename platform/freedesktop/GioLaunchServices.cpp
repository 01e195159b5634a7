#include "platform/freedesktop/GioLaunchServices.h"

#include <glib.h>
#include <sys/stat.h>

#include <algorithm>

#include "platform/freedesktop/AtomicFile.h"
#include "platform/freedesktop/DirectoryLock.h"
#include "platform/freedesktop/MimeAppsList.h"

namespace vendril {
namespace {

constexpr std::string_view kIdSuffix = ".desktop";
constexpr std::chrono::seconds kLockPatience(5);

/// By RFC 3986, section 3.1. Nothing else can be the key of a list.
bool isScheme(std::string_view text) {
  return !text.empty() && g_ascii_isalpha(text.front()) != 0 &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return g_ascii_isalnum(c) != 0 || c == '+' || c == '-' || c == '.';
         });
}

std::string bundleIdentifierOf(const std::string& id) {
  return id.substr(0, id.size() - kIdSuffix.size());
}

bool replaceIfChanged(const std::string& path, const std::string& oldText,
                      const std::string& newText) {
  return newText == oldText || !replaceFile(path, newText);
}

/// The general list: the application is the default, and is associated with the type.
bool editGeneralList(const std::string& path, const std::string& id, const std::string& type) {
  const std::optional<MimeAppsList> list = MimeAppsList::read(path);
  if (!list) {
    return false;
  }
  std::string text =
      withApplicationFirst(list->text(), MimeAppsList::kDefaultApplications, type, id);
  text = withApplicationFirst(text, MimeAppsList::kAddedAssociations, type, id);
  text = withoutApplication(text, MimeAppsList::kRemovedAssociations, type, id);
  return replaceIfChanged(path, list->text(), text);
}

/// A desktop-specific list outranks the general one, but only where it names the type, and not when
/// it does not parse.
bool editDesktopList(const std::string& path, const std::string& id, const std::string& type) {
  const std::optional<MimeAppsList> list = MimeAppsList::read(path);
  if (!list || !list->names(MimeAppsList::kDefaultApplications, type)) {
    return true;
  }
  return replaceIfChanged(
      path, list->text(),
      withApplicationFirst(list->text(), MimeAppsList::kDefaultApplications, type, id));
}

}  // namespace

GioLaunchServices::GioLaunchServices(const XdgPaths& paths) : paths_(paths), lookup_(paths) {}

std::int32_t GioLaunchServices::setDefaultHandlerForURLScheme(std::string_view scheme,
                                                              std::string_view bundleIdentifier) {
  const std::string id = std::string(bundleIdentifier) + std::string(kIdSuffix);
  if (!lookup_.applications().contains(id)) {
    return kApplicationNotFound;
  }
  return isScheme(scheme) && makeDefault(id, handlerType(scheme)) ? kSuccess : kUnknownError;
}

std::optional<std::string> GioLaunchServices::copyDefaultHandlerForURLScheme(
    std::string_view scheme) {
  const std::string type = handlerType(scheme);
  const std::shared_ptr<HandlerLookup::Look> shared = look_.lock();
  const std::optional<std::string> id = shared && shared->covers(type)
                                            ? lookup_.defaultApplication(type, *shared)
                                            : lookup_.defaultApplication(type);
  return id ? std::optional(bundleIdentifierOf(*id)) : std::nullopt;
}

std::shared_ptr<void> GioLaunchServices::shareOneLook(const std::set<std::string>& schemes) {
  std::set<std::string> types;
  for (const std::string& scheme : schemes) {
    types.insert(handlerType(scheme));
  }
  auto look = std::make_shared<HandlerLookup::Look>(std::move(types));
  look_ = look;
  return look;
}

std::optional<std::vector<std::string>> GioLaunchServices::copyAllHandlersForURLScheme(
    std::string_view scheme) {
  std::vector<std::string> handlers = lookup_.associatedApplications(handlerType(scheme));
  std::transform(handlers.begin(), handlers.end(), handlers.begin(), bundleIdentifierOf);
  return handlers;
}

/// Edits the lists and looks whether that had the effect that it should have.
bool GioLaunchServices::makeDefault(const std::string& id, const std::string& type) const {
  if (paths_.configHome.empty() || g_mkdir_with_parents(paths_.configHome.c_str(), S_IRWXU) != 0) {
    return false;
  }
  const auto lock = DirectoryLock::acquire(paths_.configHome, kLockPatience);
  return lock && editLists(id, type) && lookup_.defaultApplication(type) == id;
}

bool GioLaunchServices::editLists(const std::string& id, const std::string& type) const {
  if (!editGeneralList(paths_.configHome + "/mimeapps.list", id, type)) {
    return false;
  }
  return std::all_of(paths_.currentDesktops.begin(), paths_.currentDesktops.end(),
                     [&](const std::string& desktop) {
                       return editDesktopList(paths_.configHome + "/" + desktop + "-mimeapps.list",
                                              id, type);
                     });
}

}  // namespace vendril
