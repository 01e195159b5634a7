#pragma once

#include <curl/curl.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/UrlConnection.h"
#include "platform/freedesktop/CurlHandles.h"
#include "platform/freedesktop/CurlLimits.h"
#include "platform/freedesktop/RequestCompletion.h"

namespace vendril {

class CurlOptions;

/// One HTTP request, from its arrival to its end. Its body is sent once at most. It reports its end
/// exactly once; destroyed before it ended, it reports that it was cancelled. Belongs to one thread
/// at a time.
class CurlTransfer {
 public:
  /// `request` has a URL, and `origin` is that URL's.
  CurlTransfer(UrlRequest request, std::string origin, RequestCompletion completion);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;
  ~CurlTransfer() = default;

  const std::string& origin() const { return origin_; }

  /// The proxy in libcurl's spelling, empty for none; without a call, libcurl's environment
  /// variables decide.
  void setProxy(std::string proxy) { proxy_ = std::move(proxy); }

  /// Sets up `easy`, which is as new, for this request. It must be reset before the transfer goes
  /// away. On any result but CURLE_OK the handle must not be used.
  CURLcode prepare(CURL* easy, const CurlLimits& limits);

  /// Reports how the transfer on `easy` ended. Once only.
  void finish(CURL* easy, CURLcode result);

  /// Reports that the request failed. Once only.
  void fail(std::string description) { completion_.fail(std::move(description)); }

 private:
  static std::size_t sendBody(char* room, std::size_t size, std::size_t count,
                              void* transfer) noexcept;
  static std::size_t receiveBody(char* data, std::size_t size, std::size_t count,
                                 void* transfer) noexcept;
  static std::size_t receiveHeader(char* data, std::size_t size, std::size_t count,
                                   void* transfer) noexcept;
  void setMethodAndBody(CurlOptions& options);
  bool makeHeaderList();
  long timeoutInMilliseconds(const CurlLimits& limits) const;
  std::string failureDescription(CURLcode result) const;

  UrlRequest request_;
  std::string origin_;
  RequestCompletion completion_;
  std::optional<std::string> proxy_;
  CurlListPtr headers_;
  std::array<char, CURL_ERROR_SIZE> errorBuffer_{};
  /// What libcurl has not taken yet of the body to send.
  std::string_view unsent_;
  std::size_t maxBodySize_ = 0;
  std::size_t headerSizeLeft_ = 0;
  std::string body_;
  /// Why this side broke the transfer off; null when it did not.
  const char* refusal_ = nullptr;
};

}  // namespace vendril
