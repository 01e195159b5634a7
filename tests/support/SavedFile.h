#pragma once

#include <array>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "support/DesktopFiles.h"
#include "support/PrivateHome.h"
#include "support/RealHost.h"

namespace vendril {

/// One of the files that the application writes, and how its room or service comes to write it.
class SavedFile {
 public:
  enum class Kind { configuration, userDefaults, autostartEntry, mimeAppsList };

  static constexpr std::array kAll{Kind::configuration, Kind::userDefaults, Kind::autostartEntry,
                                   Kind::mimeAppsList};

  /// Outlived by `home` and `host`.
  SavedFile(Kind kind, const PrivateHome& home, RealHost& host);

  /// Puts there what the application needs in order to write, and a first version of the file.
  void prepare();

  /// Makes the application write the version with this number, 0 or 1, over the other; false when
  /// it reports a failure.
  bool save(int version);

  const std::filesystem::path& path() const { return path_; }
  std::string text() const { return readFile(path_); }

  /// What stands beside the file.
  std::vector<std::string> neighbours() const;

 private:
  bool saveConfiguration(const std::string& version) const;
  bool saveUserDefaults(const std::string& version);
  bool saveAutostartEntry(const std::string& version);
  bool saveMimeAppsList(const std::string& version);

  Kind kind_;
  const PrivateHome& home_;
  RealHost& host_;
  DesktopFiles files_{home_};
  std::filesystem::path path_;
};

/// For the names of tests.
std::string nameOf(SavedFile::Kind kind);
inline void PrintTo(SavedFile::Kind kind, std::ostream* out) {
  *out << nameOf(kind);
}

}  // namespace vendril
