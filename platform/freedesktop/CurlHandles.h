#pragma once

#include <memory>
#include <string>

#include "platform/freedesktop/CurlLibrary.h"

namespace vendril {

/// A deleter that calls a function of libcurl.
template <auto Function>
struct ReleaseWithCurl {
  template <class T>
  void operator()(T* object) const {
    (curl().*Function)(object);
  }
};

/// Owners of what libcurl hands out.
using CurlEasyPtr = std::unique_ptr<CURL, ReleaseWithCurl<&CurlApi::easy_cleanup>>;
using CurlMultiPtr = std::unique_ptr<CURLM, ReleaseWithCurl<&CurlApi::multi_cleanup>>;
using CurlListPtr = std::unique_ptr<curl_slist, ReleaseWithCurl<&CurlApi::slist_free_all>>;

/// A user of libcurl as a whole; the first one loads it and sets it up, the last one takes it down.
class CurlGlobal {
 public:
  CurlGlobal() : failure_(loadCurl()) {
    if (failure_.empty()) {
      const CURLcode result = curl().global_init(CURL_GLOBAL_DEFAULT);
      failure_ = result == CURLE_OK ? "" : curl().easy_strerror(result);
    }
  }
  CurlGlobal(const CurlGlobal&) = delete;
  CurlGlobal& operator=(const CurlGlobal&) = delete;
  ~CurlGlobal() {
    if (failure_.empty()) {
      curl().global_cleanup();
    }
  }

  /// Why libcurl cannot be used; empty when it can.
  const std::string& failure() const { return failure_; }

 private:
  std::string failure_;
};

}  // namespace vendril
