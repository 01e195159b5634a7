#include "platform/freedesktop/CurlLibrary.h"

#include <dlfcn.h>

#include <exception>
#include <stdexcept>

namespace vendril {
namespace {

/// The name under which every release with this interface is installed.
constexpr const char* kLibrary = "libcurl.so.4";

[[noreturn]] void fail() {
  const char* const reason = dlerror();
  throw std::runtime_error(reason != nullptr ? reason : kLibrary);
}

template <class Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (function == nullptr) {
    fail();
  }
}

CurlApi findAll() {
  void* const library = dlopen(kLibrary, RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    fail();
  }
  CurlApi api;
  find(library, "curl_global_init", api.global_init);
  find(library, "curl_global_cleanup", api.global_cleanup);
  find(library, "curl_easy_init", api.easy_init);
  find(library, "curl_easy_cleanup", api.easy_cleanup);
  find(library, "curl_easy_reset", api.easy_reset);
  find(library, "curl_easy_setopt", api.easy_setopt);
  find(library, "curl_easy_getinfo", api.easy_getinfo);
  find(library, "curl_easy_strerror", api.easy_strerror);
  find(library, "curl_multi_init", api.multi_init);
  find(library, "curl_multi_cleanup", api.multi_cleanup);
  find(library, "curl_multi_setopt", api.multi_setopt);
  find(library, "curl_multi_add_handle", api.multi_add_handle);
  find(library, "curl_multi_remove_handle", api.multi_remove_handle);
  find(library, "curl_multi_perform", api.multi_perform);
  find(library, "curl_multi_info_read", api.multi_info_read);
  find(library, "curl_multi_poll", api.multi_poll);
  find(library, "curl_multi_wakeup", api.multi_wakeup);
  find(library, "curl_multi_strerror", api.multi_strerror);
  find(library, "curl_slist_append", api.slist_append);
  find(library, "curl_slist_free_all", api.slist_free_all);
  return api;
}

}  // namespace

std::string loadCurl() {
  try {
    curl();
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

const CurlApi& curl() {
  static const CurlApi kApi = findAll();
  return kApi;
}

}  // namespace vendril
