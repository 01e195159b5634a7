#include "platform/Utf8.h"

#include <glib.h>

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

}  // namespace vendril
