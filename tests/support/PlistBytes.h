#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vendril::test {

/// `text`, `count` times.
std::string repeated(std::string_view text, std::size_t count);

/// An XML property list whose root dictionary has the value `value` under the key "k".
std::string xmlPlistWith(std::string_view value);

/// `count` arrays inside one another, in XML.
std::string nestedXmlArrays(std::size_t count);

/// The lowest `size` bytes of a number, the highest of them first.
std::string bigEndianBytes(std::uint64_t value, std::size_t size);

/// Objects of a binary property list, spelled as the format demands; references are two bytes.
std::string binaryText(std::string_view text);
std::string binaryUtf16(std::u16string_view text);
std::string binaryData(std::string_view data);
std::string binaryArray(const std::vector<std::size_t>& elements);
std::string binaryDictionary(const std::vector<std::size_t>& keys,
                             const std::vector<std::size_t>& values);
std::string binaryDate(double seconds);

/// A binary property list of these objects, the first of which is the root.
std::string binaryPlist(const std::vector<std::string>& objects);

/// A binary property list whose root dictionary has, under the key "k", the first of `objects`;
/// these are numbered from 2.
std::string binaryPlistWith(std::vector<std::string> objects);

/// `count` binary arrays inside one another, the last one empty, as numbered from 2.
std::vector<std::string> nestedBinaryArrays(std::size_t count);

}  // namespace vendril::test
