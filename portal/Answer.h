#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vendril::portal {

/// How the portal answers a report.
struct Answer {
  enum class Kind {
    status,
    /// A redirect, which the agent does not follow.
    redirect,
    /// The status, but late.
    slow,
    /// The connection is reset instead of an answer.
    reset
  };

  Kind kind = Kind::status;
  /// The HTTP status; of no meaning for `reset`.
  int status = 200;
};

/// The answer that a name asks for: "redirect", "slow", "reset" or a status from 200 to 599;
/// nothing for any other text.
std::optional<Answer> parseAnswer(std::string_view name);

}  // namespace vendril::portal
