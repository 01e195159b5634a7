#pragma once

#include <bitset>
#include <optional>
#include <string>
#include <string_view>

namespace vendril {

/// A set of ASCII characters.
class CharacterSet {
 public:
  CharacterSet() = default;
  explicit CharacterSet(std::string_view characters);

  /// The characters that may stand unescaped in the path of a URL: the ASCII letters and digits and
  /// ! $ & ' ( ) * + , - . / : = @ _ ~.
  static CharacterSet urlPathAllowedCharacterSet();

  void removeCharactersInString(std::string_view characters);
  bool contains(char character) const { return members_[static_cast<unsigned char>(character)]; }

 private:
  std::bitset<256> members_;
};

/// Replaces every byte of `text` that is not in `allowed` by "%" and two upper-case hexadecimal
/// digits. A character outside ASCII is never in the set, so each byte of its UTF-8 form is
/// escaped.
std::string addPercentEncoding(std::string_view text, const CharacterSet& allowed);

/// Replaces every "%" and two hexadecimal digits by the byte that they name. Nothing when an escape
/// is malformed or when the result is not UTF-8.
std::optional<std::string> removePercentEncoding(std::string_view text);

}  // namespace vendril
