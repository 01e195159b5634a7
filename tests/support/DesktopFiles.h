#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "support/PrivateHome.h"

namespace vendril {

/// The text of a desktop entry of an application, with `more` lines at its end.
std::string desktopEntryText(std::string_view name, std::string_view exec,
                             std::string_view more = "");

/// Fills a private home with what desktops and installers would have put there. Each operation
/// answers the path of what it wrote.
class DesktopFiles {
 public:
  using Path = std::filesystem::path;

  explicit DesktopFiles(const PrivateHome& home) : home_(home) {}

  /// A script that can be executed, below the root of the private home.
  Path program(const std::string& relativePath, std::string_view script = "") const;

  /// An application that the user, or the system, has installed, and that exists.
  Path application(const std::string& id, std::string_view more = "") const;
  Path systemApplication(const std::string& id, std::string_view more = "") const;

  /// The user's list, or another one of the same directory.
  Path mimeApps(std::string_view text, const std::string& name = "mimeapps.list") const;

  /// A file of the user's, or the system's, autostart directory.
  Path autostart(const std::string& name, std::string_view text) const;
  Path systemAutostart(const std::string& name, std::string_view text) const;

 private:
  const PrivateHome& home_;
};

}  // namespace vendril
