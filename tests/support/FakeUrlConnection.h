#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/UrlConnection.h"

namespace vendril {

/// Keeps every request until the test answers it.
class FakeUrlConnection : public UrlConnection {
 public:
  struct Pending {
    UrlRequest request;
    std::shared_ptr<OperationQueue> queue;
    CompletionHandler handler;
  };

  std::vector<Pending> requests;
  /// Runs when a request is sent.
  std::function<void()> whenSent;

  void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                               CompletionHandler handler) override {
    requests.push_back({std::move(request), std::move(queue), std::move(handler)});
    if (whenSent) {
      whenSent();
    }
  }

  /// Answers the request number `index` on its queue.
  void complete(std::size_t index, std::optional<UrlResponse> response,
                std::optional<std::string> data, std::optional<UrlError> error) {
    requests.at(index).queue->addOperation(
        [handler = requests.at(index).handler, response = std::move(response),
         data = std::move(data), error = std::move(error)] { handler(response, data, error); });
  }
};

}  // namespace vendril
