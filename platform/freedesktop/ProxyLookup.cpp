#include "platform/freedesktop/ProxyLookup.h"

#include <gio/gio.h>

#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

constexpr const char* kDirect = "direct://";

ProxyAnswer askGio(const std::string& url) {
  GProxyResolver* const resolver = g_proxy_resolver_get_default();
  // GIO's stand-in for a desktop without proxy settings.
  if (std::string_view(G_OBJECT_TYPE_NAME(resolver)) == "GDummyProxyResolver") {
    return {{kDirect}, true};
  }
  GErrorSlot error;
  const GStrvPtr found(g_proxy_resolver_lookup(resolver, url.c_str(), nullptr, error.out()));
  ProxyAnswer answer;
  for (char** proxy = found.get(); proxy != nullptr && *proxy != nullptr; ++proxy) {
    answer.proxies.emplace_back(*proxy);
  }
  return answer;
}

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

/// GIO's proxy schemes and libcurl's. GIO leaves it to a SOCKS 5 proxy to look up host names.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kProxySchemes{
    {{"http://", "http://"},
     {"https://", "https://"},
     {"socks://", "socks5h://"},
     {"socks5://", "socks5h://"},
     {"socks4a://", "socks4a://"},
     {"socks4://", "socks4://"}}};

std::optional<std::string> spelledForCurl(std::string_view proxy) {
  for (const auto& [ours, curls] : kProxySchemes) {
    if (proxy.starts_with(ours)) {
      return std::string(curls).append(proxy.substr(ours.size()));
    }
  }
  return std::nullopt;
}

}  // namespace

ProxyResolver gioProxyResolver() {
  return {askGio, [] { g_proxy_resolver_get_default(); }};
}

bool environmentNamesProxy(const std::string& origin) {
  // An upper-case HTTP_PROXY is what a web server makes of a "Proxy:" header, so libcurl ignores
  // it.
  const bool forScheme = origin.starts_with("https:") ? isSet("https_proxy") || isSet("HTTPS_PROXY")
                                                      : isSet("http_proxy");
  return forScheme || isSet("all_proxy") || isSet("ALL_PROXY");
}

std::string proxyForCurl(const ProxyAnswer& answer) {
  for (const std::string& proxy : answer.proxies) {
    if (proxy.starts_with(kDirect)) {
      return {};
    }
    if (auto spelled = spelledForCurl(proxy)) {
      return *spelled;
    }
  }
  return {};
}

}  // namespace vendril
