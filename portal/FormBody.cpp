#include "portal/FormBody.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace vendril::portal {
namespace {

std::optional<char> decodeEscape(std::string_view text) {
  constexpr std::size_t kEscapeLength = 3;
  constexpr int kHexadecimal = 16;
  if (text.size() < kEscapeLength || text.front() != '%') {
    return std::nullopt;
  }
  unsigned value = 0;
  const char* const end = text.data() + kEscapeLength;
  const auto result = std::from_chars(text.data() + 1, end, value, kHexadecimal);
  if (result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return static_cast<char>(value);
}

std::string decodeText(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const std::optional<char> escaped = decodeEscape(text);
    const char plain = text.front() == '+' ? ' ' : text.front();
    decoded += escaped.value_or(plain);
    text.remove_prefix(escaped ? 3 : 1);
  }
  return decoded;
}

}  // namespace

FormFields decodeFormBody(std::string_view body) {
  FormFields fields;
  while (!body.empty()) {
    const std::string_view field = body.substr(0, body.find('&'));
    body.remove_prefix(std::min(field.size() + 1, body.size()));
    const std::string_view name = field.substr(0, field.find('='));
    const std::string_view value = field.substr(std::min(name.size() + 1, field.size()));
    if (!field.empty()) {
      fields.emplace_back(decodeText(name), decodeText(value));
    }
  }
  return fields;
}

}  // namespace vendril::portal
