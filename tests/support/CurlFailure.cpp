#include "support/CurlFailure.h"

#include <curl/curl.h>

#include <atomic>
#include <string_view>

namespace vendril {
namespace {

using Function = CurlFailure::Function;

std::atomic<Function> failing = Function::none;

/// libcurl's own functions, as far as they have been looked up.
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

/// Keeps the function that was found and gives out the one that can fail.
template <class Pointer>
void* replaced(void* found, Pointer& real, Pointer replacement) {
  real = reinterpret_cast<Pointer>(found);
  return found != nullptr ? reinterpret_cast<void*>(replacement) : nullptr;
}

void* replacementOf(std::string_view name, void* found) {
  if (name == "curl_global_init") {
    return replaced(found, realGlobalInit, &globalInit);
  }
  if (name == "curl_multi_init") {
    return replaced(found, realMultiInit, &multiInit);
  }
  if (name == "curl_multi_add_handle") {
    return replaced(found, realMultiAddHandle, &multiAddHandle);
  }
  if (name == "curl_easy_init") {
    return replaced(found, realEasyInit, &easyInit);
  }
  return found;
}

}  // namespace

CurlFailure::CurlFailure(Function function) {
  failing = function;
}

CurlFailure::~CurlFailure() {
  failing = Function::none;
}

}  // namespace vendril

// The linker turns calls of dlsym into calls of the one, and calls of the other into dlsym's.
extern "C" void* __real_dlsym(void* library, const char* name);

extern "C" void* __wrap_dlsym(void* library, const char* name) {
  return vendril::replacementOf(name, __real_dlsym(library, name));
}
