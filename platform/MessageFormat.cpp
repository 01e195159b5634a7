#include "platform/MessageFormat.h"

#include <fmt/format.h>

#include <iterator>

namespace vendril {

std::string renderMessage(std::string_view format, std::span<const MessageArgument> arguments) {
  std::string out;
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
      std::visit(
          [&out](const auto& value) { fmt::format_to(std::back_inserter(out), "{}", value); },
          arguments[used].value());
      ++used;
    }
  }
  out += format.substr(copied);
  return out;
}

}  // namespace vendril
