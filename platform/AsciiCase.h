#pragma once

#include <string>
#include <string_view>

namespace vendril {

/// `text` with the ASCII letters A to Z in lower case and every other byte as it is, whatever the
/// locale. Any bytes will do, text that is not UTF-8 too.
std::string asciiLowercase(std::string_view text);

}  // namespace vendril
