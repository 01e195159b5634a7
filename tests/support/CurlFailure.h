#pragma once

namespace vendril {

/// While one lives, one function of libcurl fails whenever it is called. Works in a program that is
/// linked with --wrap=dlsym.
class CurlFailure {
 public:
  enum class Function { none, globalInit, multiInit, multiAddHandle, easyInit };

  explicit CurlFailure(Function function);
  CurlFailure(const CurlFailure&) = delete;
  CurlFailure& operator=(const CurlFailure&) = delete;
  ~CurlFailure();
};

}  // namespace vendril
