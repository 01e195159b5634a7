#include "tools/Text.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

#include "platform/freedesktop/LogRecord.h"

namespace vendril::tools {
namespace {

/// The marks of Unicode's bidirectional algorithm, with which a text can show itself in another
/// order than it has. A log keeps them.
// NOLINTBEGIN(misc-misleading-bidirectional): they are what is looked for.
constexpr std::array<std::string_view, 12> kMarks{"\u061C", "\u200E", "\u200F", "\u202A",
                                                  "\u202B", "\u202C", "\u202D", "\u202E",
                                                  "\u2066", "\u2067", "\u2068", "\u2069"};
// NOLINTEND(misc-misleading-bidirectional)

void appendEscaped(std::string& out, std::string_view bytes) {
  for (const char byte : bytes) {
    fmt::format_to(std::back_inserter(out), "\\x{:02x}", static_cast<unsigned char>(byte));
  }
}

/// The mark at the start of `text`; empty when there is none.
std::string_view markAt(std::string_view text) {
  const auto found = std::find_if(kMarks.begin(), kMarks.end(),
                                  [text](std::string_view mark) { return text.starts_with(mark); });
  return found != kMarks.end() ? *found : std::string_view();
}

bool isBareWord(std::string_view text) {
  constexpr std::string_view kBare =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
  return !text.empty() && text.find_first_not_of(kBare) == std::string_view::npos;
}

std::string replaceAll(std::string_view text, char character, std::string_view by) {
  std::string result;
  for (const char c : text) {
    if (c == character) {
      result += by;
    } else {
      result += c;
    }
  }
  return result;
}

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool isDumbTerminal() {
  const char* terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) == "dumb";
}

}  // namespace

std::string printableLines(std::string_view text) {
  std::string result;
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::string_view mark = markAt(text.substr(i));
    if (mark.empty()) {
      ++i;
      continue;
    }
    appendLogText(result, text.substr(plain, i - plain));
    appendEscaped(result, mark);
    i += mark.size();
    plain = i;
  }
  appendLogText(result, text.substr(plain));
  return result;
}

std::string printable(std::string_view text) {
  std::string result;
  while (true) {
    const std::size_t end = text.find('\n');
    result += printableLines(text.substr(0, end));
    if (end == std::string_view::npos) {
      return result;
    }
    appendEscaped(result, "\n");
    text.remove_prefix(end + 1);
  }
}

std::string shellWord(std::string_view text) {
  if (isBareWord(text)) {
    return std::string(text);
  }
  if (printable(text) == text) {
    return fmt::format("'{}'", replaceAll(text, '\'', R"('\'')"));
  }
  const std::string escaped = replaceAll(replaceAll(text, '\\', R"(\\)"), '\'', R"(\')");
  return fmt::format("$'{}'", printable(escaped));
}

Style Style::ofStandardOutput() {
  const bool isTerminal = isatty(STDOUT_FILENO) != 0;
  return {isTerminal, isTerminal && !isSet("NO_COLOR") && !isDumbTerminal()};
}

void Fields::add(std::string_view name, std::string_view value) {
  fmt::format_to(std::back_inserter(text_), "{:<14}{}\n", printable(name), printable(value));
}

}  // namespace vendril::tools
