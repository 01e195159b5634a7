#include "platform/freedesktop/ProxyLookup.h"

#include <gtest/gtest.h>

namespace vendril {
namespace {

TEST(ProxyLookup, TakesTheFirstProxyThatLibcurlKnows) {
  EXPECT_EQ(proxyForCurl({{"ftp://a:1", "http://b:2", "http://c:3"}}), "http://b:2");
  EXPECT_EQ(proxyForCurl({{"https://a:1"}}), "https://a:1");
}

TEST(ProxyLookup, GoesDirectlyWhenToldTo) {
  EXPECT_EQ(proxyForCurl({{"direct://", "http://a:1"}}), "");
}

TEST(ProxyLookup, GoesDirectlyWhenNoProxyIsUsable) {
  EXPECT_EQ(proxyForCurl({}), "");
  EXPECT_EQ(proxyForCurl({{"", "quic://a:1"}}), "");
}

TEST(ProxyLookup, LeavesHostNamesToTheSocks5Proxy) {
  EXPECT_EQ(proxyForCurl({{"socks://a:1"}}), "socks5h://a:1");
  EXPECT_EQ(proxyForCurl({{"socks5://a:1"}}), "socks5h://a:1");
  EXPECT_EQ(proxyForCurl({{"socks4a://a:1"}}), "socks4a://a:1");
  EXPECT_EQ(proxyForCurl({{"socks4://a:1"}}), "socks4://a:1");
}

}  // namespace
}  // namespace vendril
