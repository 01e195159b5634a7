#include "platform/freedesktop/CurlUrlConnection.h"

#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include "platform/freedesktop/CurlEventThread.h"
#include "platform/freedesktop/CurlTransfer.h"
#include "platform/freedesktop/HttpOrigin.h"
#include "platform/freedesktop/LocalFileResponse.h"
#include "platform/freedesktop/RequestCompletion.h"

namespace vendril {
namespace {

constexpr const char* kSetUpFailed = "The network could not be set up: ";

}  // namespace

void CurlUrlConnection::prepareProcess() {
  unsetenv("SSLKEYLOGFILE");
}

CurlUrlConnection::CurlUrlConnection(CurlLimits limits, ProxyResolver resolver)
    : limits_(std::move(limits)), resolver_(std::move(resolver)) {}

CurlUrlConnection::~CurlUrlConnection() = default;

void CurlUrlConnection::prepare() noexcept {
  try {
    if (thread_ == nullptr) {
      thread_ = std::make_unique<CurlEventThread>(limits_, resolver_);
    }
  } catch (const std::exception&) {
    // The request itself will try again, and report it.
    return;
  }
}

void CurlUrlConnection::sendAsynchronousRequest(UrlRequest request,
                                                std::shared_ptr<OperationQueue> queue,
                                                CompletionHandler handler) {
  if (request.url && hasScheme(request.url->absoluteString(), "file")) {
    respondWithLocalFile(*request.url, limits_.maxBodySize, *queue, std::move(handler));
    return;
  }
  RequestCompletion completion(std::move(queue), std::move(handler));
  if (!request.url) {
    completion.fail("Unsupported URL");
  } else if (auto origin = httpOrigin(*request.url)) {
    send(std::make_unique<CurlTransfer>(std::move(request), std::move(*origin),
                                        std::move(completion)));
  } else {
    completion.fail(refusalOf(*request.url).value_or(""));
  }
}

void CurlUrlConnection::send(std::unique_ptr<CurlTransfer> transfer) {
  if (thread_ != nullptr && thread_->post(transfer)) {
    return;
  }
  try {
    thread_.reset();
    thread_ = std::make_unique<CurlEventThread>(limits_, resolver_);
    if (!thread_->post(transfer)) {
      transfer->fail(thread_->failure());
    }
  } catch (const std::system_error& error) {
    transfer->fail(std::string(kSetUpFailed) + error.what());
  }
}

}  // namespace vendril
