#pragma once

#include <string>
#include <string_view>

namespace vendril::tools {

/// `text` as it may stand in one line on a terminal: control characters, line and paragraph
/// separators, marks that change the direction of writing and bytes that are not UTF-8 print as
/// "\x" and two hexadecimal digits for each of their bytes.
std::string printable(std::string_view text);

/// The same for a text of several lines: each line break is followed by a tab.
std::string printableLines(std::string_view text);

/// `text` as one word of a shell command. Control characters and the like are escaped in the
/// shell's own way, so the word is printable and still exact.
std::string shellWord(std::string_view text);

/// How to write to standard output.
struct Style {
  /// Columns for a reader, rather than lines for a program.
  bool table = false;
  bool colour = false;

  /// Tables and colours on a terminal; no colours when NO_COLOR is set or the terminal is a dumb
  /// one.
  static Style ofStandardOutput();
};

/// "name    value" lines with the values in one column; both are made printable.
class Fields {
 public:
  void add(std::string_view name, std::string_view value);
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace vendril::tools
