#pragma once

namespace vendril {

/// While one lives, one function of libcurl fails whenever it is called, or libcurl cannot be
/// loaded. Works in a program that is linked with --wrap for `loadCurl` and `curl`.
class CurlFailure {
 public:
  enum class Function { none, load, globalInit, multiInit, multiAddHandle, easyInit };

  /// Why libcurl cannot be loaded, as the requests are told.
  static constexpr const char* kLoadFailure = "libcurl.so.4: cannot open shared object file";

  explicit CurlFailure(Function function);
  CurlFailure(const CurlFailure&) = delete;
  CurlFailure& operator=(const CurlFailure&) = delete;
  ~CurlFailure();
};

}  // namespace vendril
