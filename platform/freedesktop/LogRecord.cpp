#include "platform/freedesktop/LogRecord.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
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

bool isPlain(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x20 && value < 0x7F;
}

void appendUtf8(std::string& out, std::string_view text) {
  while (!text.empty()) {
    // Most of a message is plain, and goes over in one piece.
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) {
      return;
    }
    std::size_t length = unprintableLength(text);
    if (text.front() == '\n') {
      out += "\n\t";
    } else if (length > 0) {
      appendEscaped(out, text.substr(0, length));
    } else {
      out += text.front();
      length = 1;
    }
    text.remove_prefix(length);
  }
}

}  // namespace

void appendLogText(std::string& out, std::string_view message) {
  while (!message.empty()) {
    const gchar* invalid = nullptr;
    g_utf8_validate_len(message.data(), message.size(), &invalid);
    const auto valid = static_cast<std::size_t>(invalid - message.data());
    appendUtf8(out, message.substr(0, valid));
    message.remove_prefix(valid);
    if (!message.empty()) {
      appendEscaped(out, message.substr(0, 1));
      message.remove_prefix(1);
    }
  }
}

}  // namespace vendril
