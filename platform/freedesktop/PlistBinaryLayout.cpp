#include "platform/freedesktop/PlistBinaryLayout.h"

namespace vendril {
namespace {

using Kind = BinaryPlistObject::Kind;

constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kMostNumberSize = 8;

bool isNumberSize(std::size_t size) {
  return size >= 1 && size <= kMostNumberSize;
}

/// Reads one object, from its marker on: the kind in the high half of the marker, a size in the low
/// half.
class ObjectReader {
 public:
  /// `rest` reaches from the marker to the end of the objects and is not empty.
  ObjectReader(std::string_view rest, std::size_t referenceSize)
      : high_(static_cast<unsigned char>(rest.front()) >> 4U),
        low_(static_cast<unsigned char>(rest.front()) & 0xFU),
        rest_(rest.substr(1)),
        referenceSize_(referenceSize) {}

  std::optional<BinaryPlistObject> read() {
    switch (high_) {
      case 0x0:
        return low_ == 0x8 || low_ == 0x9 ? sized(Kind::boolean, 0, 1) : std::nullopt;
      case 0x1:
        return low_ <= 4 ? sized(Kind::integer, std::size_t{1} << low_, 1) : std::nullopt;
      case 0x2:
        return low_ == 2 || low_ == 3 ? sized(Kind::real, std::size_t{1} << low_, 1) : std::nullopt;
      case 0x3:
        return low_ == 3 ? sized(Kind::date, 8, 1) : std::nullopt;
      case 0x4:
        return counted(Kind::data, 1);
      case 0x5:
        return counted(Kind::byteText, 1);
      case 0x6:
        return counted(Kind::utf16Text, 2);
      case 0xA:
        return counted(Kind::array, referenceSize_);
      case 0xD:
        return counted(Kind::dictionary, 2 * referenceSize_);
      default:
        return std::nullopt;
    }
  }

 private:
  std::optional<BinaryPlistObject> sized(Kind kind, std::size_t count, std::size_t unit) const {
    if (count > rest_.size() / unit) {
      return std::nullopt;
    }
    return BinaryPlistObject{kind, count, rest_.substr(0, count * unit)};
  }

  std::optional<BinaryPlistObject> counted(Kind kind, std::size_t unit) {
    const std::optional<std::size_t> count = takeCount();
    return count ? sized(kind, *count, unit) : std::nullopt;
  }

  /// The count in the marker, or in the integer after a marker that has no room for it.
  std::optional<std::size_t> takeCount() {
    constexpr unsigned kCountFollows = 0xF;
    if (low_ != kCountFollows) {
      return low_;
    }
    if (rest_.empty()) {
      return std::nullopt;
    }
    // An integer of at most eight bytes, whose marker is 0x10 to 0x13.
    const unsigned marker = static_cast<unsigned char>(rest_.front());
    const std::size_t size = std::size_t{1} << (marker & 0xFU);
    if (marker >> 4U != 0x1 || size > kMostNumberSize || size >= rest_.size()) {
      return std::nullopt;
    }
    const std::uint64_t count = bigEndianNumber(rest_.substr(1, size));
    rest_.remove_prefix(1 + size);
    return count;
  }

  unsigned high_;
  unsigned low_;
  std::string_view rest_;
  std::size_t referenceSize_;
};

}  // namespace

std::uint64_t bigEndianNumber(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) {
    value = value << 8U | static_cast<unsigned char>(byte);
  }
  return value;
}

std::optional<BinaryPlistLayout> BinaryPlistLayout::parse(std::string_view bytes) {
  if (!bytes.starts_with(kHeader) || bytes.size() < kHeader.size() + kTrailerSize) {
    return std::nullopt;
  }
  // The trailer: six bytes of no use, two sizes, then three numbers of eight bytes.
  const std::size_t trailer = bytes.size() - kTrailerSize;
  BinaryPlistLayout layout;
  layout.bytes_ = bytes;
  layout.offsetSize_ = bigEndianNumber(bytes.substr(trailer + 6, 1));
  layout.referenceSize_ = bigEndianNumber(bytes.substr(trailer + 7, 1));
  layout.objectCount_ = bigEndianNumber(bytes.substr(trailer + 8, 8));
  layout.root_ = bigEndianNumber(bytes.substr(trailer + 16, 8));
  layout.offsetTable_ = bigEndianNumber(bytes.substr(trailer + 24, 8));
  const bool fits = isNumberSize(layout.offsetSize_) && isNumberSize(layout.referenceSize_) &&
                    layout.offsetTable_ > kHeader.size() && layout.offsetTable_ < trailer &&
                    layout.objectCount_ <= (trailer - layout.offsetTable_) / layout.offsetSize_ &&
                    layout.root_ < layout.objectCount_;
  return fits ? std::optional(layout) : std::nullopt;
}

std::optional<BinaryPlistObject> BinaryPlistLayout::object(std::size_t number) const {
  const std::uint64_t offset =
      bigEndianNumber(bytes_.substr(offsetTable_ + number * offsetSize_, offsetSize_));
  if (offset < kHeader.size() || offset >= offsetTable_) {
    return std::nullopt;
  }
  return ObjectReader(bytes_.substr(offset, offsetTable_ - offset), referenceSize_).read();
}

std::optional<std::size_t> BinaryPlistLayout::reference(std::string_view payload,
                                                        std::size_t index) const {
  const std::uint64_t number =
      bigEndianNumber(payload.substr(index * referenceSize_, referenceSize_));
  return number < objectCount_ ? std::optional(number) : std::nullopt;
}

}  // namespace vendril
