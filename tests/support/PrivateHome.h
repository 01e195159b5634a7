#pragma once

#include <filesystem>
#include <list>
#include <string>
#include <string_view>

#include "support/ScopedVariable.h"

namespace vendril {

/// A user of the test's own: a fresh directory with a home and everything that the XDG base
/// directory variables name, which point there, and no session bus, display or desktop. The old
/// environment comes back and the directory goes away with this object.
///
/// GLib reads most of these variables once in a process. A test of code that asks GLib for them
/// counts on running in a process of its own, as ctest runs each test.
class PrivateHome {
 public:
  PrivateHome();
  PrivateHome(const PrivateHome&) = delete;
  PrivateHome& operator=(const PrivateHome&) = delete;
  ~PrivateHome();

  /// The directory that holds all the others; free for a test's own files.
  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path home() const { return root_ / "home"; }
  /// $XDG_CONFIG_HOME, $XDG_DATA_HOME, $XDG_CACHE_HOME, $XDG_STATE_HOME, $XDG_RUNTIME_DIR.
  std::filesystem::path config() const { return home() / ".config"; }
  std::filesystem::path data() const { return home() / ".local/share"; }
  std::filesystem::path cache() const { return home() / ".cache"; }
  std::filesystem::path state() const { return home() / ".local/state"; }
  std::filesystem::path runtime() const { return root_ / "runtime"; }
  /// The only directory of $XDG_CONFIG_DIRS and of $XDG_DATA_DIRS: what the system has installed.
  std::filesystem::path systemConfig() const { return root_ / "system/etc/xdg"; }
  std::filesystem::path systemData() const { return root_ / "system/share"; }

 private:
  std::filesystem::path root_;
  std::list<ScopedVariable> variables_;
};

/// Writes a file, with the directories above it.
void writeFile(const std::filesystem::path& path, std::string_view contents);

/// The contents of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace vendril
