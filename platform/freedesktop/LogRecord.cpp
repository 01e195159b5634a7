#include "platform/freedesktop/LogRecord.h"

#include <fmt/format.h>
#include <glib.h>

#include <iterator>

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
  bool plain = true;
  for (const char byte : text) {
    plain &= byte >= 0x20 && byte < 0x7F;
  }
  return plain;
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

}  // namespace

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
