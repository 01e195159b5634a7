#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vendril {

/// The unsigned number that at most eight bytes make, the highest byte first.
std::uint64_t bigEndianNumber(std::string_view bytes);

/// What a binary property list says about one of its objects.
struct BinaryPlistObject {
  enum class Kind { boolean, integer, real, date, data, byteText, utf16Text, array, dictionary };

  Kind kind;
  /// How many bytes, UTF-16 units, elements or entries.
  std::size_t count;
  /// The payload: the bytes of a scalar, or the references of a container.
  std::string_view payload;
};

/// The parts of a binary property list: a header of eight bytes, objects, a table of their offsets
/// and a trailer. Numbers are unsigned and big-endian. Borrows the bytes that it is given.
class BinaryPlistLayout {
 public:
  /// Nothing when the header, the trailer or the extent of the offset table is wrong.
  static std::optional<BinaryPlistLayout> parse(std::string_view bytes);

  std::size_t objectCount() const { return objectCount_; }
  std::size_t root() const { return root_; }

  /// The object of this number; nothing when it does not lie whole between the header and the
  /// offset table or is of an unknown kind.
  std::optional<BinaryPlistObject> object(std::size_t number) const;

  /// The number of the object that the reference at `index` in a container's payload names; nothing
  /// when there is no such object.
  std::optional<std::size_t> reference(std::string_view payload, std::size_t index) const;

 private:
  BinaryPlistLayout() = default;

  std::string_view bytes_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::size_t objectCount_ = 0;
  std::size_t root_ = 0;
  std::size_t offsetTable_ = 0;
};

}  // namespace vendril
