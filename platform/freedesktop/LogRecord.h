#pragma once

#include <string>
#include <string_view>

#include "platform/Date.h"

namespace vendril {

/// Appends a local time to `out` as "yyyy-MM-dd HH:mm:ss.SSS". Any thread.
void appendRecordTime(std::string& out, Date time);

/// Appends a log message to `out` so that nobody who has a say in its text can make it look like
/// two messages: a line break is followed by a tab, and every other control character, line or
/// paragraph separator and byte that is not UTF-8 prints as "\x" and two lower-case hexadecimal
/// digits for each of its bytes.
void appendLogText(std::string& out, std::string_view message);

}  // namespace vendril
