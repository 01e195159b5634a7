#pragma once

#include <string_view>

#include "platform/PropertyListFiles.h"

namespace vendril {

/// Property lists in XML and in binary form, by libplist, which sees only what the guard
/// (PlistGuard.h) has found safe. Files that are no property list within the guard's limits count
/// as malformed, and no file is written that could not be read again.
class PlistFiles : public PropertyListFiles {
 public:
  std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const override;
  std::optional<PropertyList::Dictionary> dictionaryWithData(
      std::span<const unsigned char> data) const override;
  /// Writes through a symbolic link and keeps the permission bits of the old file.
  bool writeDictionary(const PropertyList::Dictionary& root,
                       const std::string& path) const override;
};

/// The same, without a file: the dictionary that the bytes of a property list hold.
std::optional<PropertyList::Dictionary> parseDictionary(std::string_view bytes);

}  // namespace vendril
