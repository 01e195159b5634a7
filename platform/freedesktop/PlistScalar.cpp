#include "platform/freedesktop/PlistScalar.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "platform/freedesktop/PlistBinaryLayout.h"

namespace vendril {
namespace {

constexpr char kEightByteInteger = 0x13;
constexpr char kSixteenByteInteger = 0x14;
constexpr char kDate = 0x33;
constexpr std::string_view kHeader = "bplist00";

/// The start of 2001, from which the format counts its seconds, in Unix time.
constexpr double kReferenceDate = 978307200;

void appendBigEndian(std::string& bytes, std::uint64_t value) {
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> static_cast<unsigned>(shift) & 0xFFU);
  }
}

/// A scalar in the binary format: its marker and its value.
std::string encoded(plist_t node) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node, &bytes, &size);
  const PlistBinaryPtr owner(bytes);
  // A file of one object: the header, the object, its offset in one byte, the trailer.
  constexpr std::size_t kAround = kHeader.size() + 1 + 32;
  return size > kAround ? std::string(bytes + kHeader.size(), size - kAround) : std::string();
}

/// The scalar that these bytes encode.
PlistPtr decoded(std::string_view object) {
  constexpr std::string_view kOffsetOfObject = "\x08";
  constexpr std::string_view kUnusedAndSizes("\0\0\0\0\0\0\1\1", 8);
  constexpr std::uint64_t kObjectCount = 1;
  constexpr std::uint64_t kRoot = 0;
  std::string bytes(kHeader);
  bytes.append(object).append(kOffsetOfObject).append(kUnusedAndSizes);
  appendBigEndian(bytes, kObjectCount);
  appendBigEndian(bytes, kRoot);
  appendBigEndian(bytes, kHeader.size() + object.size());
  plist_t node = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  return PlistPtr(node);
}

}  // namespace

bool isNegativePlistInteger(plist_t node) {
  std::uint64_t value = 0;
  plist_get_uint_val(node, &value);
  return value > std::numeric_limits<std::int64_t>::max() &&
         encoded(node).starts_with(kEightByteInteger);
}

PlistPtr makePlistInteger(std::int64_t value) {
  std::string object(1, kEightByteInteger);
  appendBigEndian(object, static_cast<std::uint64_t>(value));
  return decoded(object);
}

PlistPtr makePlistInteger(std::uint64_t value) {
  std::string object(1, kSixteenByteInteger);
  appendBigEndian(object, 0);
  appendBigEndian(object, value);
  return decoded(object);
}

Date plistDate(plist_t node) {
  using Seconds = std::chrono::seconds;
  constexpr auto kEarliest = std::chrono::ceil<Seconds>(Date::min().time_since_epoch());
  constexpr auto kLatest = std::chrono::floor<Seconds>(Date::max().time_since_epoch());
  const std::string object = encoded(node);
  const auto value =
      object.starts_with(kDate)
          ? std::bit_cast<double>(bigEndianNumber(std::string_view(object).substr(1)))
          : 0;
  const double seconds = (std::isnan(value) ? 0 : value) + kReferenceDate;
  const std::chrono::duration<double> bounded(std::clamp(
      seconds, static_cast<double>(kEarliest.count()), static_cast<double>(kLatest.count())));
  return Date(std::chrono::duration_cast<Date::duration>(bounded));
}

PlistPtr makePlistDate(Date date) {
  const std::chrono::duration<double> seconds = date.time_since_epoch();
  std::string object(1, kDate);
  appendBigEndian(object, std::bit_cast<std::uint64_t>(seconds.count() - kReferenceDate));
  return decoded(object);
}

}  // namespace vendril
