#include "platform/PropertyList.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace vendril {
namespace {

constexpr std::size_t kIndent = 4;

bool isBareCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || c == '/' || c == ':' || c == '.';
}

/// Appends values to a text, one kind of value after the other.
class Printer {
 public:
  Printer(std::string& out, std::size_t depth) : out_(out), depth_(depth) {}

  void operator()(bool value) { out_ += value ? '1' : '0'; }
  void operator()(std::int64_t value) { append("{}", value); }
  void operator()(std::uint64_t value) { append("{}", value); }
  void operator()(double value) { append("{}", value); }
  void operator()(Date value) { (*this)(description(value)); }

  void operator()(const std::string& text) {
    if (!text.empty() && std::all_of(text.begin(), text.end(), isBareCharacter)) {
      out_ += text;
      return;
    }
    out_ += '"';
    for (const char character : text) {
      if (character == '"' || character == '\\') {
        out_ += '\\';
      }
      out_ += character;
    }
    out_ += '"';
  }

  void operator()(const PropertyList::Data& data) {
    out_ += '<';
    for (const std::byte byte : data) {
      append("{:02x}", std::to_integer<unsigned>(byte));
    }
    out_ += '>';
  }

  void operator()(const PropertyList::Array& array) {
    out_ += "(\n";
    for (const PropertyList& element : array) {
      out_.append((depth_ + 1) * kIndent, ' ');
      element.visit(Printer(out_, depth_ + 1));
      out_ += &element == &array.back() ? "\n" : ",\n";
    }
    out_.append(depth_ * kIndent, ' ') += ')';
  }

  void operator()(const PropertyList::Dictionary& dictionary) {
    out_ += "{\n";
    for (const auto& [key, value] : dictionary) {
      out_.append((depth_ + 1) * kIndent, ' ');
      (*this)(key);
      out_ += " = ";
      value.visit(Printer(out_, depth_ + 1));
      out_ += ";\n";
    }
    out_.append(depth_ * kIndent, ' ') += '}';
  }

 private:
  template <class... Args>
  void append(fmt::format_string<Args...> format, Args&&... arguments) {
    fmt::format_to(std::back_inserter(out_), format, std::forward<Args>(arguments)...);
  }

  std::string& out_;
  std::size_t depth_;
};

}  // namespace

std::string description(const PropertyList& value) {
  std::string out;
  value.visit(Printer(out, 0));
  return out;
}

std::string description(const PropertyList::Dictionary& dictionary) {
  std::string out;
  Printer(out, 0)(dictionary);
  return out;
}

}  // namespace vendril
