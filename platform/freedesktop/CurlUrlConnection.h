#pragma once

#include <memory>

#include "platform/UrlConnection.h"
#include "platform/freedesktop/CurlLimits.h"
#include "platform/freedesktop/ProxyLookup.h"

namespace vendril {

class CurlEventThread;
class CurlTransfer;

/// Sends http and https requests with libcurl, all of them on one thread of its own; reads file
/// URLs on the request's queue; refuses every other scheme. Nothing is set up before it is prepared
/// or the first request to a server needs it. No request is sent twice. Redirects are not followed,
/// certificates are verified, TLS is 1.2 at least. The timeout of a request counts from when it
/// gets a socket. Proxies are those of libcurl's environment variables; where these name none, the
/// resolver is asked.
class CurlUrlConnection : public UrlConnection {
 public:
  /// Takes SSLKEYLOGFILE, with which libcurl would write the keys of all connections to a file, out
  /// of the environment. To be called before the process has a second thread.
  static void prepareProcess();

  explicit CurlUrlConnection(CurlLimits limits = {}, ProxyResolver resolver = gioProxyResolver());
  CurlUrlConnection(const CurlUrlConnection&) = delete;
  CurlUrlConnection& operator=(const CurlUrlConnection&) = delete;
  /// Lets the requests that are under way go on for the drain time. Those that have no answer then
  /// fail: each handler is on its queue when this returns.
  ~CurlUrlConnection() override;

  /// Begins to load and set up what the first request needs, on the thread that will carry it. For
  /// when a request is likely to come soon; does nothing when that has been done.
  void prepare() noexcept;

  void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                               CompletionHandler handler) override;

 private:
  void send(std::unique_ptr<CurlTransfer> transfer);

  CurlLimits limits_;
  ProxyResolver resolver_;
  /// Null until it is prepared or needed.
  std::unique_ptr<CurlEventThread> thread_;
};

}  // namespace vendril
