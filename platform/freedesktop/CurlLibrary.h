#pragma once

#include <curl/curl.h>

#include <string>

namespace vendril {

/// The functions of libcurl that are used here, under their names without "curl_".
struct CurlApi {
  decltype(&curl_global_init) global_init = nullptr;
  decltype(&curl_global_cleanup) global_cleanup = nullptr;
  decltype(&curl_easy_init) easy_init = nullptr;
  decltype(&curl_easy_cleanup) easy_cleanup = nullptr;
  decltype(&curl_easy_reset) easy_reset = nullptr;
  decltype(&curl_easy_setopt) easy_setopt = nullptr;
  decltype(&curl_easy_getinfo) easy_getinfo = nullptr;
  decltype(&curl_easy_strerror) easy_strerror = nullptr;
  decltype(&curl_multi_init) multi_init = nullptr;
  decltype(&curl_multi_cleanup) multi_cleanup = nullptr;
  decltype(&curl_multi_setopt) multi_setopt = nullptr;
  decltype(&curl_multi_add_handle) multi_add_handle = nullptr;
  decltype(&curl_multi_remove_handle) multi_remove_handle = nullptr;
  decltype(&curl_multi_perform) multi_perform = nullptr;
  decltype(&curl_multi_info_read) multi_info_read = nullptr;
  decltype(&curl_multi_poll) multi_poll = nullptr;
  decltype(&curl_multi_wakeup) multi_wakeup = nullptr;
  decltype(&curl_multi_strerror) multi_strerror = nullptr;
  decltype(&curl_slist_append) slist_append = nullptr;
  decltype(&curl_slist_free_all) slist_free_all = nullptr;
};

/// Loads libcurl into the process, unless it is there, where it stays. It brings some thirty
/// libraries with it, for which neither a process that only hands its links over nor one that waits
/// for its first link has any use. Returns why that failed, empty when it did not. Any thread;
/// takes some milliseconds the first time.
std::string loadCurl();

/// The functions, once `loadCurl` has succeeded.
const CurlApi& curl();

}  // namespace vendril
