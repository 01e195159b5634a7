#include "support/PlistBytes.h"

#include <bit>

namespace vendril::test {
namespace {

constexpr std::size_t kReferenceSize = 2;
constexpr std::size_t kOffsetSize = 4;

/// The marker of an object with a count, which follows as an integer of four bytes.
std::string marker(unsigned kind, std::size_t count) {
  return std::string(1, static_cast<char>(kind << 4U | 0xFU)) + '\x12' + bigEndianBytes(count, 4);
}

std::string references(const std::vector<std::size_t>& numbers) {
  std::string bytes;
  for (const std::size_t number : numbers) {
    bytes += bigEndianBytes(number, kReferenceSize);
  }
  return bytes;
}

}  // namespace

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

std::string xmlPlistWith(std::string_view value) {
  return "<plist version=\"1.0\"><dict><key>k</key>" + std::string(value) + "</dict></plist>";
}

std::string nestedXmlArrays(std::size_t count) {
  return repeated("<array>", count) + repeated("</array>", count);
}

std::string bigEndianBytes(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t i = size; i > 0; --i) {
    bytes += static_cast<char>(value >> (8 * (i - 1)) & 0xFFU);
  }
  return bytes;
}

std::string binaryText(std::string_view text) {
  return marker(0x5, text.size()).append(text);
}

std::string binaryUtf16(std::u16string_view text) {
  std::string bytes = marker(0x6, text.size());
  for (const char16_t unit : text) {
    bytes += bigEndianBytes(unit, 2);
  }
  return bytes;
}

std::string binaryData(std::string_view data) {
  return marker(0x4, data.size()).append(data);
}

std::string binaryArray(const std::vector<std::size_t>& elements) {
  return marker(0xA, elements.size()) + references(elements);
}

std::string binaryDictionary(const std::vector<std::size_t>& keys,
                             const std::vector<std::size_t>& values) {
  return marker(0xD, keys.size()) + references(keys) + references(values);
}

std::string binaryDate(double seconds) {
  return '\x33' + bigEndianBytes(std::bit_cast<std::uint64_t>(seconds), 8);
}

std::string binaryPlist(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += bigEndianBytes(bytes.size(), kOffsetSize);
    bytes += object;
  }
  const std::size_t table = bytes.size();
  return bytes + offsets + std::string(6, '\0') + static_cast<char>(kOffsetSize) +
         static_cast<char>(kReferenceSize) + bigEndianBytes(objects.size(), 8) +
         bigEndianBytes(0, 8) + bigEndianBytes(table, 8);
}

std::string binaryPlistWith(std::vector<std::string> objects) {
  objects.insert(objects.begin(), {binaryDictionary({1}, {2}), binaryText("k")});
  return binaryPlist(objects);
}

std::vector<std::string> nestedBinaryArrays(std::size_t count) {
  std::vector<std::string> objects;
  for (std::size_t i = 0; i < count; ++i) {
    objects.push_back(i + 1 < count ? binaryArray({i + 3}) : binaryArray({}));
  }
  return objects;
}

}  // namespace vendril::test
