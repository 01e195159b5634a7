#include "support/CurlFailure.h"

#include <atomic>
#include <string>

#include "platform/freedesktop/CurlLibrary.h"

// The linker turns each call of the two functions into one of the second of these, and the first
// one is the function itself.
std::string realLoadCurl() __asm__("__real__ZN7vendril8loadCurlB5cxx11Ev");
std::string wrappedLoadCurl() __asm__("__wrap__ZN7vendril8loadCurlB5cxx11Ev");
const vendril::CurlApi& realCurl() __asm__("__real__ZN7vendril4curlEv");
const vendril::CurlApi& wrappedCurl() __asm__("__wrap__ZN7vendril4curlEv");

namespace {

using Function = vendril::CurlFailure::Function;

std::atomic<Function> failing = Function::none;

CURLcode globalInit(long flags) {
  return failing == Function::globalInit ? CURLE_FAILED_INIT : realCurl().global_init(flags);
}

CURLM* multiInit() {
  return failing == Function::multiInit ? nullptr : realCurl().multi_init();
}

CURLMcode multiAddHandle(CURLM* multi, CURL* easy) {
  return failing == Function::multiAddHandle ? CURLM_INTERNAL_ERROR
                                             : realCurl().multi_add_handle(multi, easy);
}

CURL* easyInit() {
  return failing == Function::easyInit ? nullptr : realCurl().easy_init();
}

vendril::CurlApi functionsThatMayFail() {
  vendril::CurlApi api = realCurl();
  api.global_init = globalInit;
  api.multi_init = multiInit;
  api.multi_add_handle = multiAddHandle;
  api.easy_init = easyInit;
  return api;
}

}  // namespace

std::string wrappedLoadCurl() {
  return failing == Function::load ? vendril::CurlFailure::kLoadFailure : realLoadCurl();
}

const vendril::CurlApi& wrappedCurl() {
  static const vendril::CurlApi kApi = functionsThatMayFail();
  return kApi;
}

namespace vendril {

CurlFailure::CurlFailure(Function function) {
  failing = function;
}

CurlFailure::~CurlFailure() {
  failing = Function::none;
}

}  // namespace vendril
