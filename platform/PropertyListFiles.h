#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "platform/PropertyList.h"

namespace vendril {

/// Reads and writes property lists whose root is a dictionary. Synchronous; any thread. No input
/// can make it crash, block or use memory without bound.
class PropertyListFiles {
 public:
  virtual ~PropertyListFiles() = default;

  /// The root of the property list at `path`, whatever its format. Nothing when it is missing,
  /// unreadable, malformed or not a regular file, or when its root is not a dictionary.
  virtual std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const = 0;

  /// The root of the property list that `data` holds, whatever its format.
  virtual std::optional<PropertyList::Dictionary> dictionaryWithData(
      std::span<const unsigned char> data) const = 0;

  /// Replaces the file at `path` by `root` as an XML property list, atomically; false when that
  /// failed, and then the old file stands whole.
  virtual bool writeDictionary(const PropertyList::Dictionary& root,
                               const std::string& path) const = 0;
};

}  // namespace vendril
