#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/LaunchServices.h"
#include "platform/freedesktop/HandlerLookup.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// The registry that GIO's launchers consult: the handler of a scheme is the application for the
/// type "x-scheme-handler/SCHEME". A bundle identifier is a desktop file id without ".desktop".
///
/// Questions are answered as a GIO that has just started would answer them, but without asking it:
/// GIO answers from a cache that a thread of its own drops some time after a file has changed, and
/// until then the answer may be the old one. Here each question reads the lists anew, unless some
/// share one look.
class GioLaunchServices : public LaunchServices {
 public:
  explicit GioLaunchServices(const XdgPaths& paths = XdgPaths::fromEnvironment());

  /// Edits the user's `mimeapps.list`, and with it the desktop-specific lists that name the scheme.
  /// Waits for other processes that do the same for 5 s at most. A list that does not parse is
  /// never written; all lines but those for the scheme stay as they are.
  std::int32_t setDefaultHandlerForURLScheme(std::string_view scheme,
                                             std::string_view bundleIdentifier) override;
  std::optional<std::string> copyDefaultHandlerForURLScheme(std::string_view scheme) override;
  std::shared_ptr<void> shareOneLook(const std::set<std::string>& schemes) override;
  /// Always answers, if with an empty list.
  std::optional<std::vector<std::string>> copyAllHandlersForURLScheme(
      std::string_view scheme) override;

 private:
  bool makeDefault(const std::string& id, const std::string& type) const;
  bool editLists(const std::string& id, const std::string& type) const;

  XdgPaths paths_;
  HandlerLookup lookup_;
  /// Of those who share one at the moment.
  std::weak_ptr<HandlerLookup::Look> look_;
};

}  // namespace vendril
