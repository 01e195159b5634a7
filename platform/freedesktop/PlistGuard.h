#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vendril {

/// What a property list may ask for. libplist itself knows no bounds: it recurses as deep as its
/// input nests, and makes a copy of an object for every reference to it.
struct PlistLimits {
  /// The whole file, in bytes.
  static constexpr std::size_t kFileSize = std::size_t{1} << 20;
  /// Containers inside one another, the root included.
  static constexpr std::size_t kNesting = 64;
  /// Values and keys, an object that is named twice counted twice.
  static constexpr std::size_t kNodes = std::size_t{1} << 16;
  /// Bytes of text and data, those of an object that is named twice counted twice.
  static constexpr std::size_t kContent = std::size_t{1} << 24;
  /// Key comparisons while an XML property list is read. libplist looks for each key among the
  /// earlier ones of its dictionary, and by chosen keys its hash table becomes a linear search
  /// (32,000 such keys: 15 s). One dictionary may hold 4,096 entries.
  static constexpr std::size_t kKeyComparisons = std::size_t{4096} * 4095 / 2;
};

enum class PlistFormat { xml, binary };

/// The format of the property list that `bytes` hold, when it is well-formed in the strict reading
/// of that format and within the limits, so that libplist can be trusted with it; nothing
/// otherwise. Takes time and memory in proportion to the limits at most. Any thread.
std::optional<PlistFormat> acceptedPlistFormat(std::string_view bytes);

}  // namespace vendril
