#include "platform/PercentEncoding.h"

#include <algorithm>

#include "platform/Utf8.h"

namespace vendril {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

std::optional<unsigned> hexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return static_cast<unsigned>(digit - '0');
  }
  if (digit >= 'A' && digit <= 'F') {
    return static_cast<unsigned>(digit - 'A') + 10;
  }
  if (digit >= 'a' && digit <= 'f') {
    return static_cast<unsigned>(digit - 'a') + 10;
  }
  return std::nullopt;
}

/// The byte that the escape at the start of `text` names.
std::optional<char> decodedEscape(std::string_view text) {
  if (text.size() < 3) {
    return std::nullopt;
  }
  const auto high = hexDigitValue(text[1]);
  const auto low = hexDigitValue(text[2]);
  if (!high || !low) {
    return std::nullopt;
  }
  return static_cast<char>(*high * 16 + *low);
}

}  // namespace

CharacterSet::CharacterSet(std::string_view characters) {
  for (const char character : characters) {
    members_.set(static_cast<unsigned char>(character));
  }
}

CharacterSet CharacterSet::urlPathAllowedCharacterSet() {
  return CharacterSet(
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:=@_~");
}

void CharacterSet::removeCharactersInString(std::string_view characters) {
  for (const char character : characters) {
    members_.reset(static_cast<unsigned char>(character));
  }
}

std::string addPercentEncoding(std::string_view text, const CharacterSet& allowed) {
  std::string result;
  result.reserve(text.size() + text.size() / 2);
  for (const char character : text) {
    if (allowed.contains(character)) {
      result += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      result += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
    }
  }
  return result;
}

std::optional<std::string> removePercentEncoding(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find('%'), text.size());
    result += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) {
      break;
    }
    const auto byte = decodedEscape(text);
    if (!byte) {
      return std::nullopt;
    }
    result += *byte;
    text.remove_prefix(3);
  }
  return isValidUtf8(result) ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace vendril
