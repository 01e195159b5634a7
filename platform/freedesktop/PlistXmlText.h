#pragma once

#include <string_view>

namespace vendril {

inline bool isXmlWhitespace(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

/// True when `text` is UTF-8 and made of characters that an XML document can hold: no control
/// characters but tab, line feed and carriage return.
bool isXmlText(std::string_view text);

/// True when every `&` in `text` begins one of XML's five own entities or a reference to a
/// character that XML can hold.
bool hasPlainReferences(std::string_view text);

/// Whether the text of an element spells a value of the element's type. White space around it is
/// allowed. An integer is decimal or begins with 0x, and fits a signed or unsigned 64-bit number;
/// other leading zeros are refused, for readers differ about octal numbers.
bool spellsInteger(std::string_view text);
bool spellsReal(std::string_view text);
/// yyyy-MM-ddTHH:mm:ssZ.
bool spellsDate(std::string_view text);
/// Base64 with padding.
bool spellsData(std::string_view text);
/// Nothing at all.
bool spellsNothing(std::string_view text);

}  // namespace vendril
