#pragma once

#include <curl/curl.h>

#include <memory>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// Owners of what libcurl hands out.
using CurlEasyPtr = std::unique_ptr<CURL, ReleaseWith<curl_easy_cleanup>>;
using CurlMultiPtr = std::unique_ptr<CURLM, ReleaseWith<curl_multi_cleanup>>;
using CurlListPtr = std::unique_ptr<curl_slist, ReleaseWith<curl_slist_free_all>>;

/// A user of libcurl as a whole; the first one sets it up, the last one takes it down.
class CurlGlobal {
 public:
  CurlGlobal() : result_(curl_global_init(CURL_GLOBAL_DEFAULT)) {}
  CurlGlobal(const CurlGlobal&) = delete;
  CurlGlobal& operator=(const CurlGlobal&) = delete;
  ~CurlGlobal() {
    if (result_ == CURLE_OK) {
      curl_global_cleanup();
    }
  }

  CURLcode result() const { return result_; }

 private:
  CURLcode result_;
};

}  // namespace vendril
