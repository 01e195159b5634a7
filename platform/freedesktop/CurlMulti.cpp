#include "platform/freedesktop/CurlMulti.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vendril {
namespace {

/// Enough for the links of one moment; each handle holds its buffers of some 20 KiB.
constexpr std::size_t kMaxSpareHandles = 4;

/// Connections that stay open for the next links. While more are open than that, one is closed each
/// time that a request ends: after a burst, hundreds would wait for requests that do not come.
constexpr long kMaxIdleConnections = 8;

}  // namespace

CurlMulti::CurlMulti(const CurlLimits& limits) : limits_(limits) {
  if (!global_.failure().empty()) {
    setUpFailure_ = global_.failure();
    return;
  }
  multi_.reset(curl().multi_init());
  if (multi_ == nullptr) {
    setUpFailure_ = curl().easy_strerror(CURLE_OUT_OF_MEMORY);
    return;
  }
  // Without descriptors libcurl makes a handle that nobody can wake up.
  if (const CURLMcode result = curl().multi_wakeup(multi_.get()); result != CURLM_OK) {
    setUpFailure_ = curl().multi_strerror(result);
    return;
  }
  // Idle connections count too, and make room for new ones.
  curl().multi_setopt(multi_.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS,
                      static_cast<long>(limits.maxSockets));
  curl().multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, kMaxIdleConnections);
}

CurlMulti::~CurlMulti() {
  for (const auto& [easy, running] : running_) {
    curl().multi_remove_handle(multi_.get(), easy);
  }
}

bool CurlMulti::start(std::unique_ptr<CurlTransfer> transfer) {
  CurlEasyPtr easy = takeHandle();
  if (easy == nullptr) {
    transfer->fail(curl().easy_strerror(CURLE_OUT_OF_MEMORY));
    return false;
  }
  if (const CURLcode result = transfer->prepare(easy.get(), limits_); result != CURLE_OK) {
    transfer->finish(easy.get(), result);
    return false;
  }
  CURL* const key = easy.get();
  const auto entry = running_.emplace(key, Running{std::move(transfer), std::move(easy)}).first;
  if (const CURLMcode result = curl().multi_add_handle(multi_.get(), key); result != CURLM_OK) {
    entry->second.transfer->fail(curl().multi_strerror(result));
    running_.erase(entry);
    return false;
  }
  return true;
}

std::vector<std::string> CurlMulti::perform() {
  int running = 0;
  curl().multi_perform(multi_.get(), &running);
  std::vector<std::string> ended;
  int left = 0;
  while (const CURLMsg* const message = curl().multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) {
      ended.push_back(finish(message->easy_handle, message->data.result));
    }
  }
  return ended;
}

bool CurlMulti::wait(std::optional<std::chrono::milliseconds> limit) {
  // With nothing under way libcurl has no timer of its own, and the longest wait that it offers is
  // 24 days.
  constexpr int kLongest = std::numeric_limits<int>::max();
  const auto timeout = limit ? std::clamp<long>(limit->count(), 0, kLongest) : long{kLongest};
  return curl().multi_poll(multi_.get(), nullptr, 0, static_cast<int>(timeout), nullptr) ==
         CURLM_OK;
}

CurlEasyPtr CurlMulti::takeHandle() {
  if (spareHandles_.empty()) {
    return CurlEasyPtr(curl().easy_init());
  }
  CurlEasyPtr easy = std::move(spareHandles_.back());
  spareHandles_.pop_back();
  return easy;
}

void CurlMulti::keepHandle(CurlEasyPtr easy) {
  if (spareHandles_.size() < kMaxSpareHandles) {
    curl().easy_reset(easy.get());
    spareHandles_.push_back(std::move(easy));
  }
}

std::string CurlMulti::finish(CURL* easy, CURLcode result) {
  curl().multi_remove_handle(multi_.get(), easy);
  Running ended = std::move(running_.extract(easy).mapped());
  ended.transfer->finish(easy, result);
  keepHandle(std::move(ended.easy));
  return ended.transfer->origin();
}

}  // namespace vendril
