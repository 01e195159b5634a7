#pragma once

#include <string>
#include <string_view>

namespace vendril {

/// Appends a log message to `out` so that nobody who has a say in its text can make it look like
/// two messages: a line break is followed by a tab, and every other control character, line or
/// paragraph separator and byte that is not UTF-8 prints as "\x" and two lower-case hexadecimal
/// digits for each of its bytes.
void appendLogText(std::string& out, std::string_view message);

}  // namespace vendril
