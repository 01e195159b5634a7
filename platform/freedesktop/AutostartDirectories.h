#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/DesktopEntry.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// A file of an autostart directory that counts: no file of its name lies in a directory that is
/// preferred to its own.
struct AutostartFile {
  /// The file's name, ".desktop" included.
  std::string name;
  std::string path;
  bool isUsers = false;
  /// When the file was last modified; links are followed.
  timespec modified{};
  /// True for an empty file or a link to /dev/null: the ways to switch off the file of the same
  /// name in another directory without writing an entry.
  bool isBlank = false;
  /// What the file says; nothing when it cannot be read or does not parse.
  std::optional<DesktopEntry> entry;
};

/// The directories whose entries the desktop starts when a session begins. Nothing is kept: every
/// question reads the disk.
class AutostartDirectories {
 public:
  explicit AutostartDirectories(const XdgPaths& paths);

  /// The user's own directory, which need not exist; empty when there is none.
  const std::string& users() const { return users_; }

  /// All files that count: the system's in the order of their names, then the user's from the one
  /// that was modified longest ago to the newest, those of one moment in the order of their names.
  std::vector<AutostartFile> files() const;

  /// The file with this name that counts; nothing when there is none.
  std::optional<AutostartFile> find(const std::string& name) const;

  /// The file with this name in the preferred one of the system's directories that has one.
  std::optional<AutostartFile> findSystems(const std::string& name) const;

  /// Gives the user's file with this name a time of modification after that of all the others,
  /// should it have none such yet.
  void makeNewest(const std::string& name) const;

 private:
  std::string users_;
  std::vector<std::string> systems_;
};

}  // namespace vendril
