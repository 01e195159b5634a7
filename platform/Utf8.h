#pragma once

#include <string_view>

namespace vendril {

/// True when `bytes` is well-formed UTF-8. A NUL byte counts as the character U+0000.
bool isValidUtf8(std::string_view bytes);

}  // namespace vendril
