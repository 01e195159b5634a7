#include "platform/Utf8.h"

#include <glib.h>

#include <algorithm>

namespace vendril {

bool isValidUtf8(std::string_view bytes) {
  // GLib takes NUL for the end of a text, so the stretches between NULs are checked one by one.
  while (true) {
    const std::string_view stretch = bytes.substr(0, bytes.find('\0'));
    if (!g_utf8_validate_len(stretch.data(), stretch.size(), nullptr)) {
      return false;
    }
    if (stretch.size() == bytes.size()) {
      return true;
    }
    bytes.remove_prefix(stretch.size() + 1);
  }
}

std::size_t characterCount(std::string_view text) {
  const auto beginsCharacter = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

}  // namespace vendril
