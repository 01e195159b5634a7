#include "platform/MessageFormat.h"

#include <fmt/format.h>

#include <concepts>
#include <type_traits>

namespace vendril {
namespace {

struct Appender {
  std::string& out;

  void operator()(std::string_view text) const { out += text; }
  template <std::integral Number>
  void operator()(Number number) const {
    const fmt::format_int text(number);
    out.append(text.data(), text.size());
  }
};

/// As much room as the message needs, when its numbers are not longer than their placeholders.
std::size_t likelyLength(std::string_view format, std::span<const MessageArgument> arguments) {
  std::size_t length = format.size();
  for (const MessageArgument& argument : arguments) {
    std::visit(
        [&length](const auto& value) {
          if constexpr (std::is_convertible_v<decltype(value), std::string_view>) {
            length += std::string_view(value).size();
          }
        },
        argument.value());
  }
  return length;
}

}  // namespace

std::string renderMessage(std::string_view format, std::span<const MessageArgument> arguments) {
  std::string out;
  out.reserve(likelyLength(format, arguments));
  MessageFormatScanner scanner(format);
  std::size_t copied = 0;
  std::size_t used = 0;
  while (const auto placeholder = scanner.next()) {
    using Kind = MessageFormatScanner::Kind;
    out += format.substr(copied, placeholder->begin - copied);
    copied = placeholder->end;
    if (placeholder->kind == Kind::percent) {
      out += '%';
    } else if (placeholder->kind == Kind::unknown || used == arguments.size()) {
      out += format.substr(placeholder->begin, placeholder->end - placeholder->begin);
    } else {
      std::visit(Appender{out}, arguments[used].value());
      ++used;
    }
  }
  out += format.substr(copied);
  return out;
}

}  // namespace vendril
