// Edits the text of a list line by line. What GKeyFile writes parses to the same values, but lines
// that nobody asked to change would differ: it normalises indentation, the blanks around "=" and
// line ends, and merges groups that come twice.

#include <glib.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "platform/Utf8.h"
#include "platform/freedesktop/MimeAppsList.h"

namespace vendril {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// The text as its lines, each with its line end.
std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.emplace_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line;
  }
  return text;
}

/// The name in a line such as "[name]"; nothing when it is another line. In a text that parses,
/// every line that begins so is one, and GKeyFile bears with some bytes behind the bracket.
std::optional<std::string_view> groupOf(std::string_view line) {
  line = trimmed(line);
  return line.starts_with('[') ? std::optional(line.substr(1, line.rfind(']') - 1)) : std::nullopt;
}

/// The key in a line such as "key = value"; nothing when it is another line.
std::optional<std::string_view> keyOf(std::string_view line) {
  const std::string_view key = trimmed(line.substr(0, line.find('=')));
  return line.find('=') == line.npos || key.starts_with('#') || key.starts_with('[')
             ? std::nullopt
             : std::optional(key);
}

/// False for what makes the whole value unreadable to GKeyFile, and so to everybody: a byte that is
/// not UTF-8, or an escape that there is not.
bool isReadable(const std::string& element) {
  for (std::size_t i = element.find('\\'); i != element.npos; i = element.find('\\', i + 2)) {
    if (i + 1 == element.size() ||
        std::string_view("sntr\\;").find(element[i + 1]) == std::string_view::npos) {
      return false;
    }
  }
  return isValidUtf8(element);
}

/// The value in a line as GKeyFile reads it: without blanks in front, but with those behind, and
/// only as far as a NUL.
std::string_view valueOf(std::string_view line) {
  std::string_view value = line.substr(line.find('=') + 1);
  value.remove_suffix(value.ends_with("\r\n") ? 2 : value.ends_with('\n') ? 1 : 0);
  value = value.substr(0, value.find('\0'));
  value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
  return value;
}

/// The list in the value of a line, its elements as they are written.
std::vector<std::string> elementsOf(std::string_view line) {
  std::vector<std::string> elements(1);
  const std::string_view value = valueOf(line);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == ';') {
      elements.emplace_back();
      continue;
    }
    elements.back() += value[i];
    if (value[i] == '\\' && i + 1 < value.size()) {
      elements.back() += value[++i];
    }
  }
  std::erase(elements, "");
  return elements;
}

/// The line end of `line`, or the one that it gets when it has none. A last line that ends in a
/// carriage return has that in its value, and would lose it to a line feed alone.
std::string_view lineEndOf(std::string_view line) {
  return line.ends_with("\r\n") || line.ends_with('\r') ? "\r\n" : "\n";
}

/// `line` with another list as its value.
std::string withElements(const std::string& line, const std::vector<std::string>& elements) {
  const std::size_t value = line.find_first_not_of(" \t", line.find('=') + 1);
  std::string result = line.substr(0, value);
  for (const std::string& element : elements) {
    result += element + ";";
  }
  return result + std::string(lineEndOf(line));
}

/// The lines of a list, with the places in them that one group and one of its keys have.
class Lines {
 public:
  Lines(std::string_view text, std::string_view group, std::string_view key)
      : lines_(splitLines(text)), group_(group), key_(key) {
    bool isInside = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (const auto name = groupOf(lines_[i])) {
        isInside = *name == group;
      }
      if (isInside) {
        note(i);
      }
    }
  }

  /// The line that counts for the key: the last one of those that name it; null when none does.
  std::string* keyLine() { return keyLines_.empty() ? nullptr : &lines_[keyLines_.back()]; }

  void removeKeyLines() {
    for (const std::size_t index : keyLines_) {
      lines_[index].clear();
    }
  }

  /// Adds a line for the key at the end of its group, and the group at the end of the list when it
  /// has none yet.
  void addKeyLine(std::string_view id) {
    if (!groupEnd_) {
      addGroup();
    }
    std::string& before = lines_[*groupEnd_ - 1];
    const std::string end(lineEndOf(before));
    if (!before.ends_with('\n')) {
      before += end;
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(*groupEnd_),
                  key_ + "=" + std::string(id) + ";" + end);
  }

  std::string text() const { return joinLines(lines_); }

 private:
  void note(std::size_t index) {
    const auto key = keyOf(lines_[index]);
    if (key == key_) {
      keyLines_.push_back(index);
    }
    if (key || groupOf(lines_[index])) {
      groupEnd_ = index + 1;
    }
  }

  void addGroup() {
    const std::string end(lines_.empty() ? std::string_view("\n") : lineEndOf(lines_.back()));
    if (!lines_.empty()) {
      if (!lines_.back().ends_with('\n')) {
        lines_.back() += end;
      }
      lines_.push_back(end);
    }
    lines_.push_back("[" + group_ + "]" + end);
    groupEnd_ = lines_.size();
  }

  std::vector<std::string> lines_;
  std::string group_;
  std::string key_;
  std::vector<std::size_t> keyLines_;
  /// Behind the last line of the group that is neither blank nor a comment.
  std::optional<std::size_t> groupEnd_;
};

}  // namespace

std::string withApplicationFirst(std::string_view text, std::string_view group,
                                 std::string_view type, std::string_view id) {
  Lines lines(text, group, type);
  std::string* const line = lines.keyLine();
  if (line == nullptr) {
    lines.addKeyLine(id);
    return lines.text();
  }
  std::vector<std::string> ids = elementsOf(*line);
  const bool wasReadable = std::erase_if(ids, std::not_fn(isReadable)) == 0;
  if (wasReadable && !ids.empty() && ids.front() == id) {
    return std::string(text);
  }
  std::erase(ids, id);
  ids.insert(ids.begin(), std::string(id));
  *line = withElements(*line, ids);
  return lines.text();
}

std::string withoutApplication(std::string_view text, std::string_view group, std::string_view type,
                               std::string_view id) {
  Lines lines(text, group, type);
  std::string* const line = lines.keyLine();
  if (line == nullptr) {
    return std::string(text);
  }
  std::vector<std::string> ids = elementsOf(*line);
  if (std::erase(ids, id) == 0) {
    return std::string(text);
  }
  if (ids.empty()) {
    lines.removeKeyLines();
  } else {
    *line = withElements(*line, ids);
  }
  return lines.text();
}

}  // namespace vendril
