#include "platform/freedesktop/PlistXmlText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/Utf8.h"

namespace vendril {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kWhitespace);
  if (begin == std::string_view::npos) {
    return {};
  }
  return text.substr(begin, text.find_last_not_of(kWhitespace) - begin + 1);
}

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isForbiddenControl(char character) {
  return static_cast<unsigned char>(character) < 0x20 && !isXmlWhitespace(character);
}

/// Looks at all of them, whatever the first ones are, and without a branch: that way the compiler
/// looks at many at once.
bool isAllowedAscii(std::string_view text) {
  unsigned char others = 0;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool isSpace = (byte == '\t') | (byte == '\n') | (byte == '\r');
    others |= static_cast<unsigned char>((byte >= 0x80) | ((byte < 0x20) & !isSpace));
  }
  return others == 0;
}

/// The number that the whole of `digits` spells.
std::optional<std::uint64_t> number(std::string_view digits, int base) {
  std::uint64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, base);
  return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

/// The production Char of XML 1.0.
bool isXmlCharacter(std::uint64_t code) {
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

/// `name` is what stands between `&` and `;`.
bool isPlainReference(std::string_view name) {
  constexpr std::array<std::string_view, 5> kEntities{"amp", "apos", "gt", "lt", "quot"};
  if (!name.starts_with('#')) {
    return std::find(kEntities.begin(), kEntities.end(), name) != kEntities.end();
  }
  const bool hexadecimal = name.starts_with("#x");
  const auto code = hexadecimal ? number(name.substr(2), 16) : number(name.substr(1), 10);
  return code && isXmlCharacter(*code);
}

/// Whether the part of a date at `begin` is a number in the range.
bool isField(std::string_view date, std::size_t begin, std::uint64_t least, std::uint64_t most) {
  const auto value = number(date.substr(begin, 2), 10);
  return value && *value >= least && *value <= most;
}

}  // namespace

bool isXmlText(std::string_view text) {
  constexpr std::string_view kNoncharacterFffe = "\xEF\xBF\xBE";
  constexpr std::string_view kNoncharacterFfff = "\xEF\xBF\xBF";
  return isAllowedAscii(text) ||
         (std::none_of(text.begin(), text.end(), isForbiddenControl) && isValidUtf8(text) &&
          text.find(kNoncharacterFffe) == std::string_view::npos &&
          text.find(kNoncharacterFfff) == std::string_view::npos);
}

bool hasPlainReferences(std::string_view text) {
  for (std::size_t begin = text.find('&'); begin != std::string_view::npos;
       begin = text.find('&', begin + 1)) {
    const std::size_t end = text.find(';', begin);
    if (end == std::string_view::npos ||
        !isPlainReference(text.substr(begin + 1, end - begin - 1))) {
      return false;
    }
  }
  return true;
}

bool spellsInteger(std::string_view text) {
  text = trimmed(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (!hexadecimal && text.size() > 1 && text.front() == '0') {
    return false;
  }
  const auto magnitude = hexadecimal ? number(text.substr(2), 16) : number(text, 10);
  constexpr auto kLeast = std::uint64_t{1} << 63U;
  return magnitude && (!negative || *magnitude <= kLeast);
}

bool spellsReal(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+') && !text.starts_with("+-")) {
    text.remove_prefix(1);
  }
  double value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  // A number that is too large or too small for the type is still a number.
  return result.ec != std::errc::invalid_argument && result.ptr == end;
}

bool spellsDate(std::string_view text) {
  constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:ddZ";
  text = trimmed(text);
  const auto fits = [](char character, char pattern) {
    return pattern == 'd' ? isDigit(character) : character == pattern;
  };
  return std::equal(text.begin(), text.end(), kPattern.begin(), kPattern.end(), fits) &&
         isField(text, 5, 1, 12) && isField(text, 8, 1, 31) && isField(text, 11, 0, 23) &&
         isField(text, 14, 0, 59) && isField(text, 17, 0, 60);
}

bool spellsData(std::string_view text) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char character : text) {
    if (isXmlWhitespace(character)) {
      continue;
    }
    const bool isPadding = character == '=';
    if (!isPadding && (padding > 0 || kAlphabet.find(character) == std::string_view::npos)) {
      return false;
    }
    (isPadding ? padding : digits) += 1;
  }
  return padding <= 2 && (digits + padding) % 4 == 0;
}

bool spellsNothing(std::string_view text) {
  return trimmed(text).empty();
}

}  // namespace vendril
