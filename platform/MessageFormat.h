#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "platform/Date.h"
#include "platform/MessageFormatScanner.h"
#include "platform/PropertyList.h"
#include "platform/Url.h"

namespace vendril {

/// One argument of a message: an object that prints as text, or an integer. Borrows text that it is
/// given by reference, so it lives no longer than the call that it is made for.
class MessageArgument {
 public:
  // NOLINTBEGIN(google-explicit-constructor): arguments are written as they are.
  MessageArgument(std::string_view text) : value_(text) {}
  MessageArgument(const std::string& text) : value_(std::string_view(text)) {}
  MessageArgument(const char* text) : value_(std::string_view(text)) {}
  MessageArgument(const Url& url) : value_(std::string_view(url.absoluteString())) {}
  MessageArgument(Date date) : value_(description(date)) {}
  MessageArgument(const PropertyList& value) : value_(description(value)) {}
  MessageArgument(const PropertyList::Dictionary& value) : value_(description(value)) {}

  /// An absent object prints as "(null)".
  template <class T>
  requires(!std::integral<T>) MessageArgument(const std::optional<T>& object)
      : MessageArgument(object ? MessageArgument(*object) : MessageArgument("(null)")) {}

  template <std::integral T>
  MessageArgument(T number) : value_(wide(number)) {}
  // NOLINTEND(google-explicit-constructor)

  template <class T>
  static constexpr bool isNumber = std::integral<std::remove_cvref_t<T>>;

  const auto& value() const { return value_; }

 private:
  template <std::integral T>
  static auto wide(T number) {
    if constexpr (std::is_signed_v<T>) {
      return std::int64_t{number};
    } else {
      return std::uint64_t{number};
    }
  }

  std::variant<std::string_view, std::string, std::int64_t, std::uint64_t> value_;
};

/// A message format that is checked against its arguments when the program is compiled: as many
/// placeholders as arguments, each of a kind that its argument can fill. Made from a literal. A
/// null format is allowed and stands for "no message".
template <class... Args>
class BasicMessageFormat {
 public:
  // NOLINTBEGIN(google-explicit-constructor): formats are written as literals.
  consteval BasicMessageFormat(const char* text) : text_(text) {
    if (text != nullptr) {
      check(text);
    }
  }
  consteval BasicMessageFormat(std::nullptr_t) : text_(nullptr) {}
  // NOLINTEND(google-explicit-constructor)

  constexpr const char* text() const { return text_; }

 private:
  static consteval void check(std::string_view text) {
    constexpr std::array<bool, sizeof...(Args) + 1> kIsNumber{MessageArgument::isNumber<Args>...};
    MessageFormatScanner scanner(text);
    std::size_t used = 0;
    while (const auto placeholder = scanner.next()) {
      using Kind = MessageFormatScanner::Kind;
      if (placeholder->kind == Kind::percent) {
        continue;
      }
      const bool fits = placeholder->kind != Kind::unknown && used < sizeof...(Args) &&
                        kIsNumber[used] == (placeholder->kind == Kind::number);
      if (!fits) {
        throw "a placeholder has no argument of its kind";
      }
      ++used;
    }
    if (used != sizeof...(Args)) {
      throw "an argument has no placeholder";
    }
  }

  const char* text_;
};

template <class... Args>
using MessageFormat = BasicMessageFormat<std::type_identity_t<Args>...>;

/// Renders a format whose arguments are known only at run time. A placeholder without an argument,
/// or one of an unknown spelling, is copied as it stands; surplus arguments are ignored. Texts are
/// never read as formats themselves.
std::string renderMessage(std::string_view format, std::span<const MessageArgument> arguments);

/// Renders a checked, non-null format.
template <class... Args>
std::string formatMessage(MessageFormat<Args...> format, const Args&... arguments) {
  const std::array<MessageArgument, sizeof...(Args)> list{MessageArgument(arguments)...};
  return renderMessage(format.text(), list);
}

}  // namespace vendril
