#pragma once

#include <cstddef>
#include <string_view>

namespace vendril {

/// True when `bytes` is well-formed UTF-8. A NUL byte counts as the character U+0000.
bool isValidUtf8(std::string_view bytes);

/// The number of characters of a UTF-8 text.
std::size_t characterCount(std::string_view text);

}  // namespace vendril
