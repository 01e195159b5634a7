#include "tools/LogLines.h"

#include <jansson.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/Date.h"
#include "tools/Text.h"

namespace vendril::tools {
namespace {

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};
using JsonPtr = std::unique_ptr<json_t, JsonRelease>;

/// A value of the journal: a text, or the bytes of one that is not UTF-8.
std::string fieldText(const json_t* record, const char* key) {
  const json_t* value = json_object_get(record, key);
  if (json_is_string(value)) {
    return {json_string_value(value), json_string_length(value)};
  }
  std::string bytes;
  for (std::size_t i = 0; i < json_array_size(value); ++i) {
    bytes += static_cast<char>(json_integer_value(json_array_get(value, i)));
  }
  return bytes;
}

/// The journal counts microseconds since the epoch.
std::string timeText(const std::string& microseconds) {
  if (microseconds.empty()) {
    return "";
  }
  const Date date{std::chrono::microseconds(std::atoll(microseconds.c_str()))};
  return DateFormatter("yyyy-MM-dd HH:mm:ss.SSS").stringFromDate(date);
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view take(std::string_view& text, std::size_t length) {
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(taken.size());
  return taken;
}

/// Takes `expected` from the front of `text`; false when something else stands there.
bool skip(std::string_view& text, std::string_view expected) {
  return text.starts_with(expected) && !take(text, expected.size()).empty();
}

std::string_view takeDigits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  return take(text, static_cast<std::size_t>(end - text.begin()));
}

/// Takes the time from the front of `text`; nothing when none stands there. A regular expression
/// would do for the whole line, but the library's matches a long one by recursion.
std::string_view takeTime(std::string_view& text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd.ddd";
  const bool isTime = text.size() >= kForm.size() &&
                      std::equal(kForm.begin(), kForm.end(), text.begin(), [](char form, char c) {
                        return form == 'd' ? isDigit(c) : form == c;
                      });
  return isTime ? take(text, kForm.size()) : std::string_view();
}

}  // namespace

std::optional<LogLine> fromJournal(const std::string& line) {
  const JsonPtr record(json_loadb(line.data(), line.size(), JSON_ALLOW_NUL, nullptr));
  if (!json_is_object(record.get())) {
    return std::nullopt;
  }
  return LogLine{timeText(fieldText(record.get(), "__REALTIME_TIMESTAMP")),
                 fieldText(record.get(), "_PID"), fieldText(record.get(), "MESSAGE")};
}

LogLine fromLogFile(const std::string& line) {
  std::string_view rest = line;
  if (skip(rest, "[")) {
    const std::string_view time = takeTime(rest);
    if (!time.empty() && skip(rest, "] ")) {
      return {std::string(time), "", std::string(rest)};
    }
  }
  return {"", "", line};
}

std::optional<LogLine> fromStandardError(const std::string& line) {
  std::string_view rest = line;
  const std::string_view time = takeTime(rest);
  if (!time.empty() && skip(rest, " vendril[")) {
    const std::string_view process = takeDigits(rest);
    if (!process.empty() && skip(rest, "] ")) {
      return LogLine{std::string(time), std::string(process), std::string(rest)};
    }
  }
  return line.starts_with('\t') ? std::optional(LogLine{"", "", line.substr(1)}) : std::nullopt;
}

std::string lineText(const LogLine& line) {
  std::string text = line.time;
  if (!line.process.empty()) {
    text += " vendril[" + line.process + "]";
  }
  text += text.empty() ? "\t" : " ";
  return text + printableLines(line.message) + "\n";
}

}  // namespace vendril::tools
