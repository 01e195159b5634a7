#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/OperationQueue.h"
#include "platform/Url.h"

namespace vendril {

/// A request for the contents of a URL.
struct UrlRequest {
  enum class CachePolicy { useProtocolCachePolicy = 0 };

  /// Nothing when the address did not form a URL: such a request fails.
  std::optional<Url> url;
  CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
  /// The limit for the whole transfer.
  std::chrono::duration<double> timeoutInterval{60.0};
  std::string httpMethod = "GET";
  std::vector<std::pair<std::string, std::string>> headerFields;
  std::optional<std::string> httpBody;
};

/// The answer to a request.
struct UrlResponse {
  /// Nothing when the response is not an HTTP response.
  std::optional<int> statusCode;
};

/// Why there is no answer.
struct UrlError {
  std::string localizedDescription;
};

/// Sends requests over the network.
class UrlConnection {
 public:
  using CompletionHandler =
      std::function<void(std::optional<UrlResponse> response, std::optional<std::string> data,
                         std::optional<UrlError> error)>;

  virtual ~UrlConnection() = default;

  /// Sends `request` and returns at once. `handler` runs exactly once, on `queue`; the connection
  /// keeps the queue until then. Main thread only.
  virtual void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                                       CompletionHandler handler) = 0;
};

}  // namespace vendril
