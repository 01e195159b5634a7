#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/Utf8.h"
#include "platform/freedesktop/LogRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vendril::fuzz::check({reinterpret_cast<const char*>(data), size});
  return 0;
}

namespace vendril::fuzz {
namespace {

bool isControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

/// U+0080 to U+009F in UTF-8.
bool holdsC1Control(std::string_view text) {
  for (std::size_t i = text.find('\xC2'); i != text.npos; i = text.find('\xC2', i + 1)) {
    if (i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      return true;
    }
  }
  return false;
}

}  // namespace

void require(bool holds, std::string_view property) {
  if (!holds) {
    std::cerr << "Broken property: " << property << std::endl;
    std::abort();
  }
}

void requireOneRecord(std::string_view message) {
  std::string record;
  appendLogText(record, message);
  require(isValidUtf8(record), "A record is UTF-8");
  require(std::count(record.begin(), record.end(), '\n') ==
              std::count(message.begin(), message.end(), '\n'),
          "A record has the line breaks of its message and no others");
  for (std::size_t i = 0; i < record.size(); ++i) {
    if (record[i] == '\n') {
      ++i;
      require(i < record.size() && record[i] == '\t', "A tab follows each line break of a record");
    } else {
      require(!isControl(record[i]), "A record holds no control character");
    }
  }
  require(!holdsC1Control(record), "A record holds no C1 control character");
  require(record.find("\u2028") == record.npos && record.find("\u2029") == record.npos,
          "A record holds no line or paragraph separator");
}

}  // namespace vendril::fuzz
