#include "support/CurlFailure.h"

#include <curl/curl.h>

#include <atomic>

namespace {

using Function = vendril::CurlFailure::Function;

std::atomic<Function> failing = Function::none;

}  // namespace

// The linker turns calls of each function into calls of the one, and calls of the other into the
// function's.
extern "C" CURLcode __real_curl_global_init(long flags);
extern "C" CURLM* __real_curl_multi_init();
extern "C" CURLMcode __real_curl_multi_add_handle(CURLM* multi, CURL* easy);
extern "C" CURL* __real_curl_easy_init();

extern "C" CURLcode __wrap_curl_global_init(long flags) {
  return failing == Function::globalInit ? CURLE_FAILED_INIT : __real_curl_global_init(flags);
}

extern "C" CURLM* __wrap_curl_multi_init() {
  return failing == Function::multiInit ? nullptr : __real_curl_multi_init();
}

extern "C" CURLMcode __wrap_curl_multi_add_handle(CURLM* multi, CURL* easy) {
  return failing == Function::multiAddHandle ? CURLM_INTERNAL_ERROR
                                             : __real_curl_multi_add_handle(multi, easy);
}

extern "C" CURL* __wrap_curl_easy_init() {
  return failing == Function::easyInit ? nullptr : __real_curl_easy_init();
}

namespace vendril {

CurlFailure::CurlFailure(Function function) {
  failing = function;
}

CurlFailure::~CurlFailure() {
  failing = Function::none;
}

}  // namespace vendril
