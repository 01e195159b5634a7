#include "platform/AsciiCase.h"

#include <glib.h>

#include <algorithm>

namespace vendril {

std::string asciiLowercase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), g_ascii_tolower);
  return result;
}

}  // namespace vendril
