#include "portal/Answer.h"

#include <charconv>

namespace vendril::portal {
namespace {

constexpr int kLowestStatus = 200;
constexpr int kHighestStatus = 599;
constexpr int kFound = 302;

std::optional<int> parseStatus(std::string_view text) {
  int status = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, status);
  const bool isNumber = result.ec == std::errc() && result.ptr == end;
  const bool isStatus = isNumber && status >= kLowestStatus && status <= kHighestStatus;
  return isStatus ? std::optional(status) : std::nullopt;
}

}  // namespace

std::optional<Answer> parseAnswer(std::string_view name) {
  if (name == "redirect") {
    return Answer{Answer::Kind::redirect, kFound};
  }
  if (name == "slow") {
    return Answer{.kind = Answer::Kind::slow};
  }
  if (name == "reset") {
    return Answer{.kind = Answer::Kind::reset};
  }
  const std::optional<int> status = parseStatus(name);
  return status ? std::optional(Answer{Answer::Kind::status, *status}) : std::nullopt;
}

}  // namespace vendril::portal
