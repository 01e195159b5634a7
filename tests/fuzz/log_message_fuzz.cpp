// The message formatter at run time, the renderings of what messages show, and the record that a
// message makes. An input is a format and its arguments, with NULs between them; an argument that
// begins with "#" is an integer.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "platform/MessageFormat.h"
#include "platform/PropertyList.h"
#include "platform/Utf8.h"
#include "platform/freedesktop/LogRecord.h"

namespace vendril::fuzz {
namespace {

std::vector<std::string> piecesOf(std::string_view input) {
  std::vector<std::string> pieces(1);
  for (const char c : input) {
    if (c == '\0') {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

std::int64_t numberIn(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// The arguments, and what each of them prints as.
struct Arguments {
  explicit Arguments(std::span<const std::string> pieces) {
    for (const std::string& piece : pieces) {
      if (piece.starts_with('#')) {
        const std::int64_t number = numberIn(piece.substr(1));
        values.emplace_back(number);
        texts.push_back(std::to_string(number));
      } else {
        values.emplace_back(piece);
        texts.push_back(piece);
      }
    }
  }

  std::vector<MessageArgument> values;
  std::vector<std::string> texts;
};

/// What a format renders to, by its rule.
std::string expectedMessage(std::string_view format, const std::vector<std::string>& arguments) {
  std::string message;
  auto argument = arguments.begin();
  for (std::size_t i = 0; i < format.size(); ++i) {
    std::size_t length = 0;
    for (const std::string_view spelling : {"@", "s", "d", "u", "ld", "lu", "hhd", "%"}) {
      if (format[i] == '%' && format.substr(i + 1).starts_with(spelling)) {
        length = spelling.size();
      }
    }
    if (length == 1 && format[i + 1] == '%') {
      message += '%';
    } else if (length > 0 && argument != arguments.end()) {
      message += *argument++;
    } else {
      message += format.substr(i, length + 1);
    }
    i += length;
  }
  return message;
}

/// The text that a rendering of a text stands for.
std::string unquoted(std::string_view rendering) {
  if (!rendering.starts_with('"')) {
    return std::string(rendering);
  }
  std::string text;
  for (std::size_t i = 1; i + 1 < rendering.size(); ++i) {
    if (rendering[i] == '\\') {
      ++i;
    }
    text += rendering[i];
  }
  return text;
}

void checkRenderings(std::span<const std::string> texts) {
  PropertyList::Dictionary dictionary;
  for (const std::string& text : texts) {
    require(unquoted(description(PropertyList(text))) == text,
            "A text comes back from its rendering");
    dictionary.insert_or_assign(text, PropertyList::Array{text, PropertyList::Dictionary{}});
  }
  requireOneRecord(description(dictionary));
  const Date date{Date::duration(numberIn(texts.front()))};
  require(description(date).size() == std::string_view("yyyy-MM-dd HH:mm:ss +0000").size(),
          "A date prints in its fixed form");
}

bool isPlain(std::string_view text) {
  return isValidUtf8(text) &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

void checkRecord(std::string_view message) {
  requireOneRecord(message);
  std::string record = "head";
  appendLogText(record, message);
  require(record.starts_with("head"), "What stands in front of a message stays");
  require(!isPlain(message) || record == "head" + std::string(message),
          "A plain message stays as it is");
  require(record.size() <= 4 + 4 * message.size(), "A record is four times its message at most");
}

}  // namespace

void check(std::string_view input) {
  const std::vector<std::string> pieces = piecesOf(input);
  const Arguments arguments(std::span<const std::string>(pieces).subspan(1));
  const std::string message = renderMessage(pieces.front(), arguments.values);
  require(message == expectedMessage(pieces.front(), arguments.texts),
          "A message is its format with its arguments in their places, each taken as it is");
  checkRecord(message);
  checkRecord(input);
  checkRenderings(pieces);
}

}  // namespace vendril::fuzz
