#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vendril {

/// What a proxy resolver says about a URL.
struct ProxyAnswer {
  /// Proxies as URLs, the preferred one first; "direct://" stands for none.
  std::vector<std::string> proxies;
  /// True when every URL will get this answer from now on, so that nobody need ask again.
  bool always = false;
};

/// Finds the proxies for a URL. Called on worker threads, several at once; may take its time.
using ProxyResolver = std::function<ProxyAnswer(const std::string& url)>;

/// The desktop's resolver. Its first call loads the GIO modules.
ProxyResolver gioProxyResolver();

/// True when libcurl's environment variables name a proxy for URLs of this origin's scheme.
bool environmentNamesProxy(const std::string& origin);

/// The first proxy of an answer that libcurl can use, as it spells it; empty stands for none.
std::string proxyForCurl(const ProxyAnswer& answer);

}  // namespace vendril
