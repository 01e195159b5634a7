#include "platform/Url.h"

#include <glib.h>

#include <algorithm>

#include "platform/PercentEncoding.h"

namespace vendril {
namespace {

constexpr std::string_view kFileScheme = "file";

/// The reserved and unreserved characters of RFC 3986, and "%".
bool isUriCharacter(char c) {
  constexpr std::string_view kMarks = "-._~:/?#[]@!$&'()*+,;=%";
  return g_ascii_isalnum(c) != 0 || kMarks.find(c) != std::string_view::npos;
}

/// The length of the scheme at the start of `text`; 0 when there is none.
std::size_t schemeLength(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.empty() || g_ascii_isalpha(text.front()) == 0) {
    return 0;
  }
  const auto isSchemeCharacter = [](char c) {
    return g_ascii_isalnum(c) != 0 || c == '+' || c == '-' || c == '.';
  };
  const std::string_view scheme = text.substr(0, colon);
  return std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter) ? colon : 0;
}

bool isPort(std::string_view port) {
  return std::all_of(port.begin(), port.end(), [](char c) { return g_ascii_isdigit(c) != 0; });
}

/// A bracketed IP literal with nothing but a port behind it.
bool isIpLiteralAndPort(std::string_view text) {
  const std::size_t end = text.find(']');
  if (end == std::string_view::npos) {
    return false;
  }
  const std::string_view literal = text.substr(1, end - 1);
  const std::string_view rest = text.substr(end + 1);
  return !literal.empty() && literal.find_first_of("[@") == std::string_view::npos &&
         (rest.empty() || (rest.front() == ':' && isPort(rest.substr(1))));
}

/// [ userinfo "@" ] host [ ":" port ]
bool isAuthority(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at != std::string_view::npos) {
    if (text.substr(0, at).find_first_of("[]") != std::string_view::npos) {
      return false;
    }
    text.remove_prefix(at + 1);
  }
  if (text.starts_with('[')) {
    return isIpLiteralAndPort(text);
  }
  const std::size_t colon = text.find(':');
  return text.find_first_of("[]@") == std::string_view::npos &&
         (colon == std::string_view::npos || isPort(text.substr(colon + 1)));
}

/// The part of a URL after its scheme: [ "//" authority ] path [ "?" query ] [ "#" fragment ].
bool isHierarchy(std::string_view text) {
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const std::size_t end = std::min(text.find_first_of("/?#"), text.size());
    if (!isAuthority(text.substr(0, end))) {
      return false;
    }
    text.remove_prefix(end);
  }
  const std::size_t hash = text.find('#');
  return text.find_first_of("[]") == std::string_view::npos &&
         (hash == std::string_view::npos || text.find('#', hash + 1) == std::string_view::npos);
}

/// Without a scheme, a colon in the first segment of the path would read as the end of one.
bool isRelativeReference(std::string_view text) {
  return text.substr(0, text.find_first_of("/?#")).find(':') == std::string_view::npos &&
         isHierarchy(text);
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  if (text.empty() || !std::all_of(text.begin(), text.end(), isUriCharacter)) {
    return std::nullopt;
  }
  const std::size_t scheme = schemeLength(text);
  const bool parses = scheme > 0 ? isHierarchy(text.substr(scheme + 1)) : isRelativeReference(text);
  return parses ? std::optional(Url(std::string(text))) : std::nullopt;
}

Url Url::fileUrlWithPath(std::string_view path) {
  return Url("file://" + addPercentEncoding(path, CharacterSet::urlPathAllowedCharacterSet()));
}

std::string_view Url::scheme() const {
  return std::string_view(text_).substr(0, schemeLength(text_));
}

std::optional<std::string> Url::fileSystemPath() const {
  if (!hasScheme(text_, kFileScheme)) {
    return std::nullopt;
  }
  std::string_view rest = std::string_view(text_).substr(kFileScheme.size() + 1);
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const std::string_view host = rest.substr(0, rest.find('/'));
    if (!host.empty() && host != "localhost") {
      return std::nullopt;
    }
    rest.remove_prefix(host.size());
  }
  std::optional<std::string> path =
      rest.starts_with('/') ? removePercentEncoding(rest) : std::nullopt;
  // The system would take a NUL for the end of the path and go to another file.
  return path && path->find('\0') == std::string::npos ? path : std::nullopt;
}

bool hasScheme(std::string_view text, std::string_view scheme) {
  return text.size() > scheme.size() && text[scheme.size()] == ':' &&
         g_ascii_strncasecmp(text.data(), scheme.data(), scheme.size()) == 0;
}

}  // namespace vendril
