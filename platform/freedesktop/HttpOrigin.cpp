#include "platform/freedesktop/HttpOrigin.h"

#include <string_view>
#include <utility>

#include "platform/AsciiCase.h"

namespace vendril {
namespace {

/// Splits "host:port"; the host may be an IP literal in brackets.
std::pair<std::string_view, std::string_view> hostAndPort(std::string_view text) {
  const std::size_t literalEnd = text.find(']');
  const std::size_t colon = text.find(':', literalEnd == std::string_view::npos ? 0 : literalEnd);
  if (colon == std::string_view::npos) {
    return {text, {}};
  }
  return {text.substr(0, colon), text.substr(colon + 1)};
}

}  // namespace

std::optional<std::string> httpOrigin(const Url& url) {
  const std::string scheme = asciiLowercase(url.scheme());
  std::string_view rest = std::string_view(url.absoluteString()).substr(scheme.size());
  if ((scheme != "http" && scheme != "https") || !rest.starts_with("://")) {
    return std::nullopt;
  }
  rest.remove_prefix(3);
  std::string_view authority = rest.substr(0, rest.find_first_of("/?#"));
  authority.remove_prefix(authority.rfind('@') + 1);
  const auto [host, port] = hostAndPort(authority);
  if (host.empty()) {
    return std::nullopt;
  }
  const std::string_view defaultPort = scheme == "http" ? "80" : "443";
  return scheme + "://" + asciiLowercase(host) + ":" +
         std::string(port.empty() ? defaultPort : port);
}

std::optional<std::string> refusalOf(const Url& url) {
  const std::string& text = url.absoluteString();
  if (hasScheme(text, "file") || httpOrigin(url)) {
    return std::nullopt;
  }
  if (hasScheme(text, "http") || hasScheme(text, "https")) {
    return "Unsupported URL: no host";
  }
  const std::string scheme(url.scheme());
  return "Unsupported URL" + (scheme.empty() ? ": no scheme" : " scheme: " + scheme);
}

}  // namespace vendril
