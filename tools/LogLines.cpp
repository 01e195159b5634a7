#include "tools/LogLines.h"

#include <jansson.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <regex>

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
  static const std::regex kRecord(R"(^\[(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})\] ([^]*)$)");
  std::smatch match;
  return std::regex_match(line, match, kRecord) ? LogLine{match[1], "", match[2]}
                                                : LogLine{"", "", line};
}

std::optional<LogLine> fromStandardError(const std::string& line) {
  static const std::regex kRecord(
      R"(^(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}) vendril\[(\d+)\] ([^]*)$)");
  std::smatch match;
  if (std::regex_match(line, match, kRecord)) {
    return LogLine{match[1], match[2], match[3]};
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
