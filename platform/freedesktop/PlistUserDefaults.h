#pragma once

#include <string>

#include "platform/PropertyListFiles.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "platform/UserDirectories.h"

namespace vendril {

/// User defaults in a property list of their own. The file is read on first use and written only
/// when a value has changed, whole, with the entries of others in it kept. A file that cannot be
/// read counts as empty, is reported to the log once, and is replaced by the next change. Without a
/// path the values live in memory alone.
class PlistUserDefaults : public UserDefaults {
 public:
  /// `files` and `log` must outlive the defaults.
  PlistUserDefaults(std::optional<std::string> path, const PropertyListFiles& files,
                    SystemLog& log);

  std::optional<std::string> stringForKey(std::string_view key) override;
  void setObject(const std::optional<std::string>& value, std::string_view key) override;
  /// Makes the directory, for the user alone, when it is missing.
  bool synchronize() override;

 private:
  PropertyList::Dictionary& values();
  PropertyList::Dictionary read() const;

  std::optional<std::string> path_;
  const PropertyListFiles& files_;
  SystemLog& log_;
  std::optional<PropertyList::Dictionary> values_;
  bool isChanged_ = false;
};

/// Where the defaults of the application with this desktop id lie: in the Preferences directory of
/// the user's Library; nothing when there is no Library directory.
std::optional<std::string> userDefaultsPath(const UserDirectories& directories,
                                            std::string_view desktopId);

}  // namespace vendril
