#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace vendril {

/// Walks a format from placeholder to placeholder. Known are %@ and %s (an object or text), %d,
/// %ld, %hhd, %lu and %u (an integer), and %% (a percent sign, which takes no argument).
class MessageFormatScanner {
 public:
  enum class Kind { text, number, percent, unknown };
  struct Placeholder {
    std::size_t begin;
    std::size_t end;
    Kind kind;
  };

  constexpr explicit MessageFormatScanner(std::string_view format) : format_(format) {}

  /// The next placeholder, or nothing at the end of the format.
  constexpr std::optional<Placeholder> next() {
    const std::size_t begin = format_.find('%', position_);
    if (begin == std::string_view::npos) {
      return std::nullopt;
    }
    const std::string_view rest = format_.substr(begin);
    for (const Spelling& spelling : kSpellings) {
      if (rest.starts_with(spelling.text)) {
        position_ = begin + spelling.text.size();
        return Placeholder{begin, position_, spelling.kind};
      }
    }
    position_ = begin + 1;
    return Placeholder{begin, position_, Kind::unknown};
  }

 private:
  struct Spelling {
    std::string_view text;
    Kind kind;
  };
  static constexpr std::array<Spelling, 8> kSpellings{{{"%@", Kind::text},
                                                       {"%s", Kind::text},
                                                       {"%hhd", Kind::number},
                                                       {"%ld", Kind::number},
                                                       {"%lu", Kind::number},
                                                       {"%d", Kind::number},
                                                       {"%u", Kind::number},
                                                       {"%%", Kind::percent}}};

  std::string_view format_;
  std::size_t position_ = 0;
};

}  // namespace vendril
