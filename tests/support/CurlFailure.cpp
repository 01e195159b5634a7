#include "support/CurlFailure.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>
#include <string_view>

namespace {

using Function = vendril::CurlFailure::Function;

std::atomic<Function> failing = Function::none;

decltype(&curl_global_init) realGlobalInit = nullptr;
decltype(&curl_multi_init) realMultiInit = nullptr;
decltype(&curl_multi_add_handle) realMultiAddHandle = nullptr;
decltype(&curl_easy_init) realEasyInit = nullptr;

CURLcode globalInit(long flags) {
  return failing == Function::globalInit ? CURLE_FAILED_INIT : realGlobalInit(flags);
}

CURLM* multiInit() {
  return failing == Function::multiInit ? nullptr : realMultiInit();
}

CURLMcode multiAddHandle(CURLM* multi, CURL* easy) {
  return failing == Function::multiAddHandle ? CURLM_INTERNAL_ERROR
                                             : realMultiAddHandle(multi, easy);
}

CURL* easyInit() {
  return failing == Function::easyInit ? nullptr : realEasyInit();
}

/// Keeps the function that was found, and gives out `double_` in its place.
template <class Pointer>
void* replaced(void* found, Pointer& real, Pointer double_) {
  real = reinterpret_cast<Pointer>(found);
  return reinterpret_cast<void*>(double_);
}

}  // namespace

// libcurl's functions are looked up by their names. The linker turns each look-up into a call of
// the second function; the first one is the look-up itself.
extern "C" void* __real_dlsym(void* library, const char* name);

extern "C" void* __wrap_dlsym(void* library, const char* name) {
  void* const found = __real_dlsym(library, name);
  const std::string_view function(name);
  if (function == "curl_global_init") {
    return replaced(found, realGlobalInit, &globalInit);
  }
  if (function == "curl_multi_init") {
    return replaced(found, realMultiInit, &multiInit);
  }
  if (function == "curl_multi_add_handle") {
    return replaced(found, realMultiAddHandle, &multiAddHandle);
  }
  if (function == "curl_easy_init") {
    return replaced(found, realEasyInit, &easyInit);
  }
  return found;
}

namespace vendril {

CurlFailure::CurlFailure(Function function) {
  failing = function;
}

CurlFailure::~CurlFailure() {
  failing = Function::none;
}

}  // namespace vendril
