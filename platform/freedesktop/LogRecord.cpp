#include "platform/freedesktop/LogRecord.h"

#include <fmt/format.h>
#include <glib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <optional>

namespace vendril {
namespace {

// The number of bytes of the character at the start of `text` when it must not stand in a line;
// 0 for all other characters. `text` is UTF-8 and not empty.
std::size_t unprintableLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x20 || first == 0x7F) {
    return 1;
  }
  if (first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0) {
    return 2;  // U+0080 to U+009F
  }
  if (text.starts_with("\u2028") || text.starts_with("\u2029")) {
    return 3;
  }
  return 0;
}

void appendEscaped(std::string& out, std::string_view bytes) {
  for (const char byte : bytes) {
    fmt::format_to(std::back_inserter(out), "\\x{:02x}", static_cast<unsigned char>(byte));
  }
}

/// True when a text is made of printable ASCII characters alone. Looks at all of them, whatever the
/// first ones are: that way the compiler looks at many at once.
bool isPlain(std::string_view text) {
  constexpr unsigned char kFirst = 0x20;
  constexpr unsigned char kCount = 0x7F - kFirst;
  unsigned char others = 0;
  for (const char byte : text) {
    others |= static_cast<unsigned char>(byte - kFirst) >= kCount ? 1 : 0;
  }
  return others == 0;
}

void appendUtf8(std::string& out, std::string_view text) {
  while (!text.empty()) {
    std::size_t length = unprintableLength(text);
    if (length > 0) {
      appendEscaped(out, text.substr(0, length));
    } else {
      out += text.front();
      length = 1;
    }
    text.remove_prefix(length);
  }
}

void appendLine(std::string& out, std::string_view line) {
  if (isPlain(line)) {
    out += line;
    return;
  }
  while (!line.empty()) {
    const gchar* invalid = nullptr;
    g_utf8_validate_len(line.data(), line.size(), &invalid);
    const auto valid = static_cast<std::size_t>(invalid - line.data());
    appendUtf8(out, line.substr(0, valid));
    line.remove_prefix(valid);
    if (!line.empty()) {
      appendEscaped(out, line.substr(0, 1));
      line.remove_prefix(1);
    }
  }
}

/// The text of one second. Needs no destructor, because records are written until the very end of a
/// process.
struct SecondText {
  std::optional<std::chrono::sys_seconds> second;
  std::array<char, 32> text{};
  std::size_t length = 0;
};

}  // namespace

// A local time costs as much as the rest of a record, and records come many in one second.
void appendRecordTime(std::string& out, Date time) {
  thread_local SecondText last;
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  if (last.second != second) {
    const std::string text = DateFormatter("yyyy-MM-dd HH:mm:ss").stringFromDate(time);
    last.length = text.copy(last.text.data(), last.text.size());
    last.second = second;
  }
  out.append(last.text.data(), last.length);
  const auto fraction = std::chrono::floor<std::chrono::milliseconds>(time) - second;
  fmt::format_to(std::back_inserter(out), ".{:03}", fraction.count());
}

void appendLogText(std::string& out, std::string_view message) {
  while (true) {
    const std::size_t end = message.find('\n');
    appendLine(out, message.substr(0, end));
    if (end == std::string_view::npos) {
      return;
    }
    out += "\n\t";
    message.remove_prefix(end + 1);
  }
}

}  // namespace vendril
