#pragma once

#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vendril {

/// What a proxy resolver says about a URL.
struct ProxyAnswer {
  /// Proxies as URLs, the preferred one first; "direct://" stands for none.
  std::vector<std::string> proxies;
  /// True when every URL will get this answer from now on, so that nobody need ask again.
  bool always = false;
};

/// Finds the proxies for a URL.
class ProxyResolver {
 public:
  /// Called on worker threads, several at once; may take its time.
  using Lookup = std::function<ProxyAnswer(const std::string& url)>;

  /// `prepare` loads what the first lookup needs, on a worker thread.
  template <class Callable>
  requires(std::is_invocable_r_v<ProxyAnswer, Callable, const std::string&>)
      ProxyResolver(Callable lookup,  // NOLINT(google-explicit-constructor)
                    std::function<void()> prepare = {})
      : lookup_(std::move(lookup)), prepare_(std::move(prepare)) {}

  ProxyAnswer operator()(const std::string& url) const { return lookup_(url); }
  /// Empty when there is nothing to prepare.
  const std::function<void()>& prepare() const { return prepare_; }

 private:
  Lookup lookup_;
  std::function<void()> prepare_;
};

/// The desktop's resolver. To be prepared, or asked for the first time, it loads the GIO modules.
ProxyResolver gioProxyResolver();

/// True when libcurl's environment variables name a proxy for URLs of this origin's scheme.
bool environmentNamesProxy(const std::string& origin);

/// The first proxy of an answer that libcurl can use, as it spells it; empty stands for none.
std::string proxyForCurl(const ProxyAnswer& answer);

}  // namespace vendril
