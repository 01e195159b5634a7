#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vendril {

/// The application's persistent key-value store. Main thread only.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The text stored under `key`; nothing when there is none or when it is of another kind.
  virtual std::optional<std::string> stringForKey(std::string_view key) = 0;

  /// Stores a text; nothing removes the entry. Kept in memory until `synchronize`.
  virtual void setObject(const std::optional<std::string>& value, std::string_view key) = 0;

  /// Writes what has changed to the disk; false when that failed.
  virtual bool synchronize() = 0;
};

}  // namespace vendril
