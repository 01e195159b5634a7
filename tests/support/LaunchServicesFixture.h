#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/freedesktop/GioLaunchServices.h"
#include "support/ChildProcess.h"
#include "support/DesktopFiles.h"
#include "support/PrivateHome.h"

namespace vendril {

inline constexpr const char* kOurs = "com.brelto.vendril";
inline constexpr const char* kMimeType = "MimeType=x-scheme-handler/vendril;\n";

/// The list of a user who has had other tools write into it.
inline constexpr const char* kUsersList =
    "# my own list, do not touch\n"
    "\n"
    "[Default Applications]\n"
    "# the browser\n"
    "x-scheme-handler/http = browser.desktop;other.desktop\n"
    "   text/html=browser.desktop\n"
    "text/latin=\xE9\xE8.desktop\n"
    "\n"
    "image/png=viewer.desktop;\r\n"
    "[Removed Associations]\n"
    "text/plain=office.desktop;\n"
    "[X-Tool]\n"
    "key[de]=Schl\xC3\xBCssel\n"
    "[Default Applications]\n"
    "x-scheme-handler/https=browser.desktop\n"
    "\n"
    "# the end";

/// The registry of scheme handlers of a private home.
class LaunchServicesOfTheDesktop : public testing::Test {
 protected:
  std::filesystem::path listPath() const { return home_.config() / "mimeapps.list"; }
  std::string list() const { return readFile(listPath()); }

  static std::int32_t registerOurs(const std::string& scheme = "vendril") {
    return GioLaunchServices().setDefaultHandlerForURLScheme(scheme, kOurs);
  }
  static std::optional<std::string> handler(const std::string& scheme = "vendril") {
    return GioLaunchServices().copyDefaultHandlerForURLScheme(scheme);
  }

  /// The default handler that GIO finds when a process asks it for the first time.
  static std::optional<std::string> gioHandler() {
    ChildProcess gio({"gio", "mime", "x-scheme-handler/vendril"}, {{"LC_ALL", "C"}});
    EXPECT_TRUE(gio.waitForExit().has_value());
    const std::string line = gio.out().substr(0, gio.out().find('\n'));
    return line.ends_with(".desktop")
               ? std::optional(
                     line.substr(line.rfind(' ') + 1, line.size() - line.rfind(' ') - 1 - 8))
               : std::nullopt;
  }

  PrivateHome home_;
  DesktopFiles files_{home_};
};

}  // namespace vendril
