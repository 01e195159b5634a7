#include "app/LinkParameters.h"

#include <vector>

#include "platform/PercentEncoding.h"

namespace vendril {
namespace {

/// The pieces of `text` between the separators, empty ones included.
std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> pieces;
  while (true) {
    const std::size_t end = text.find_first_of(separators);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(end + 1);
  }
}

/// How many bytes the first character of a UTF-8 text takes; 0 for an empty text.
std::size_t firstCharacterLength(std::string_view text) {
  constexpr auto isContinuation = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
  };
  std::size_t length = text.empty() ? 0 : 1;
  while (length < text.size() && isContinuation(text[length])) {
    ++length;
  }
  return length;
}

/// What follows the first "portalURI" and one further character, to the end of the link; nothing
/// when that is empty.
std::optional<std::string> portalUriIn(const std::string& decodedLink) {
  const std::size_t name = decodedLink.find(kPortalUri);
  if (name == std::string::npos) {
    return std::nullopt;
  }
  std::string_view value = std::string_view(decodedLink).substr(name + kPortalUri.size());
  value.remove_prefix(firstCharacterLength(value));
  return value.empty() ? std::nullopt : std::optional(std::string(value));
}

/// The first well-formed "session_id" among the parameters of a portal URL.
std::optional<std::string> sessionIdIn(std::string_view portalUri) {
  const std::vector<std::string_view> pieces = split(portalUri, "?&");
  for (auto piece = pieces.begin() + 1; piece != pieces.end(); ++piece) {
    const std::vector<std::string_view> parts = split(*piece, "=");
    if (parts.size() == 2 && parts[0] == kSessionId && !parts[1].empty()) {
      return std::string(parts[1]);
    }
  }
  return std::nullopt;
}

}  // namespace

LinkParameters linkParametersOf(const Url& link) {
  LinkParameters found;
  const std::optional<std::string> decodedLink = removePercentEncoding(link.absoluteString());
  if (decodedLink) {
    found.portalUri = portalUriIn(*decodedLink);
  }
  if (found.portalUri) {
    found.sessionId = sessionIdIn(*found.portalUri);
  }
  return found;
}

}  // namespace vendril
