#include "platform/freedesktop/RequestCompletion.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include "platform/freedesktop/HeapReturn.h"

namespace vendril {

UrlError makeUrlError(std::string description) {
  std::replace_if(
      description.begin(), description.end(), [](char c) { return g_ascii_iscntrl(c) != 0; }, ' ');
  return {std::move(description)};
}

RequestCompletion::RequestCompletion(std::shared_ptr<OperationQueue> queue,
                                     UrlConnection::CompletionHandler handler)
    : queue_(std::move(queue)), handler_(std::move(handler)) {}

RequestCompletion::~RequestCompletion() {
  if (queue_ != nullptr) {
    fail("The request was cancelled");
  }
}

void RequestCompletion::succeed(UrlResponse response, std::string data) {
  report(response, std::move(data), std::nullopt);
}

void RequestCompletion::fail(std::string description) {
  report(std::nullopt, std::nullopt, makeUrlError(std::move(description)));
}

void RequestCompletion::report(std::optional<UrlResponse> response, std::optional<std::string> data,
                               std::optional<UrlError> error) {
  const std::shared_ptr<OperationQueue> queue = std::exchange(queue_, nullptr);
  queue->addOperation([handler = std::move(handler_), response, data = std::move(data),
                       error = std::move(error)]() mutable {
    handler(response, std::move(data), std::move(error));
    returnHeapWhenQuiet();
  });
}

}  // namespace vendril
