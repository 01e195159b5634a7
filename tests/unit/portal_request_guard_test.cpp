#include "portal/RequestGuard.h"

#include <gtest/gtest.h>

namespace vendril::portal {
namespace {

constexpr int kPort = 8017;

bool passes(const Provenance& provenance) {
  return !refusalOf(provenance, kPort);
}

Provenance from(const std::string& host, const std::optional<std::string>& origin = {}) {
  return {.host = host, .origin = origin, .fetchSite = "", .fetchMode = ""};
}

TEST(PortalRequestGuard, ProgramsPassUnderThisComputersOwnNames) {
  EXPECT_TRUE(passes(from("127.0.0.1:8017")));
  EXPECT_TRUE(passes(from("localhost:8017")));
}

TEST(PortalRequestGuard, OtherNamesAndPortsAreRefused) {
  for (const char* host : {"", "127.0.0.1", "localhost", "127.0.0.1:80", "rebound.example:8017",
                           "127.0.0.1:8017.example", "example.127.0.0.1:8017", "[::1]:8017"}) {
    EXPECT_FALSE(passes(from(host))) << host;
  }
}

TEST(PortalRequestGuard, PageOfThePortalPasses) {
  EXPECT_TRUE(passes(from("127.0.0.1:8017", "http://127.0.0.1:8017")));
  EXPECT_TRUE(passes(from("localhost:8017", "http://localhost:8017")));
  EXPECT_TRUE(passes({"127.0.0.1:8017", {}, "same-origin", "cors"}));
  EXPECT_TRUE(passes({"127.0.0.1:8017", {}, "none", "navigate"}));
}

TEST(PortalRequestGuard, PagesOfOtherSitesAreRefused) {
  for (const char* origin : {"https://example.com", "null", "", "http://127.0.0.1:80",
                             "https://127.0.0.1:8017", "http://localhost:8017"}) {
    EXPECT_FALSE(passes(from("127.0.0.1:8017", origin))) << origin;
  }
  EXPECT_FALSE(passes({"127.0.0.1:8017", {}, "cross-site", "no-cors"}));
  EXPECT_FALSE(passes({"127.0.0.1:8017", {}, "same-site", "no-cors"}));
  EXPECT_FALSE(passes({"127.0.0.1:8017", "https://example.com", "cross-site", "navigate"}))
      << "a form of another site";
}

TEST(PortalRequestGuard, LinkOfAnotherSiteToThePagePasses) {
  EXPECT_TRUE(passes({"127.0.0.1:8017", {}, "cross-site", "navigate"}));
}

}  // namespace
}  // namespace vendril::portal
