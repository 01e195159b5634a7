#pragma once

#include <utility>

#include "platform/UrlConnection.h"

namespace vendril {

/// Hands every operation on to another UrlConnection, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingUrlConnection : public UrlConnection {
 public:
  explicit ForwardingUrlConnection(UrlConnection& target) : target_(target) {}

  void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                               CompletionHandler handler) override {
    target_.sendAsynchronousRequest(std::move(request), std::move(queue), std::move(handler));
  }

 private:
  UrlConnection& target_;
};

}  // namespace vendril
