#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Url.h"

namespace vendril {

/// The names of what a link has to carry.
inline constexpr std::string_view kPortalUri = "portalURI";
inline constexpr std::string_view kSessionId = "session_id";

/// What a link carries, decoded; nothing for what it does not. There is no session without a
/// portal's address, because it is looked for in there.
struct LinkParameters {
  std::optional<std::string> portalUri;
  std::optional<std::string> sessionId;
};

/// Takes a link apart. Neither is found when the link's percent-encoding is malformed.
LinkParameters linkParametersOf(const Url& link);

}  // namespace vendril
