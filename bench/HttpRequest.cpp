#include "bench/HttpRequest.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace vendril::bench {
namespace {

std::size_t contentLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length:";
  for (std::size_t at = head.find('\r'); at != std::string_view::npos;
       at = head.find('\r', at + 1)) {
    if (strncasecmp(head.data() + at, kName.data(), std::min(kName.size(), head.size() - at)) ==
        0) {
      return std::strtoul(head.data() + at + kName.size(), nullptr, 10);
    }
  }
  return 0;
}

}  // namespace

bool isWholeRequest(const std::string& text) {
  constexpr std::string_view kEndOfHead = "\r\n\r\n";
  const std::size_t end = text.find(kEndOfHead);
  return end != std::string::npos &&
         text.size() >= end + kEndOfHead.size() + contentLength(text.substr(0, end));
}

}  // namespace vendril::bench
