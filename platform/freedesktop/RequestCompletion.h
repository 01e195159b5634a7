#pragma once

#include <memory>
#include <string>

#include "platform/UrlConnection.h"

namespace vendril {

/// An error whose description is one line: control characters turn into blanks.
UrlError makeUrlError(std::string description);

/// The end of one request: runs its handler on its queue, exactly once. When it is destroyed before
/// anything was reported, the request has been cancelled, and it reports that. Movable; belongs to
/// one thread at a time.
class RequestCompletion {
 public:
  RequestCompletion(std::shared_ptr<OperationQueue> queue,
                    UrlConnection::CompletionHandler handler);
  RequestCompletion(RequestCompletion&&) noexcept = default;
  RequestCompletion& operator=(RequestCompletion&&) = delete;
  ~RequestCompletion();

  void succeed(UrlResponse response, std::string data);
  void fail(std::string description);

 private:
  void report(std::optional<UrlResponse> response, std::optional<std::string> data,
              std::optional<UrlError> error);

  /// Null once the end has been reported.
  std::shared_ptr<OperationQueue> queue_;
  UrlConnection::CompletionHandler handler_;
};

}  // namespace vendril
