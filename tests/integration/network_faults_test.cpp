// What may be wrong with a network, with a portal's certificate and with this process's own means:
// each request ends with one error that says so, and later ones work.

#include <glib.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/mount.h>
#include <sys/socket.h>

#include <chrono>
#include <future>
#include <memory>

#include "support/CurlFailure.h"
#include "support/DescriptorsExhausted.h"
#include "support/MainLoop.h"
#include "support/OwnNamespace.h"
#include "support/PrivateHome.h"
#include "support/RawServer.h"
#include "support/TestCertificate.h"
#include "support/TestPortal.h"
#include "support/UniqueFd.h"
#include "support/UrlConnectionFixture.h"

namespace vendril {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class NetworkFaults : public UrlConnectionFixture {
 protected:
  // An application has its main context before the first request; making it needs descriptors.
  NetworkFaults() { g_main_context_default(); }

  void expectError(const Outcome& outcome, const std::string& text) {
    EXPECT_FALSE(outcome.response);
    EXPECT_FALSE(outcome.data);
    EXPECT_THAT(outcome.errorText(), HasSubstr(text));
  }
};

TEST_F(NetworkFaults, CertificateThatHasExpiredIsRefused) {
  constexpr int kYesterday = -1;
  const TestCertificate certificate(kYesterday);
  TestPortal portal(certificate);
  connectWith({.certificateAuthorityFile = certificate.certificateFile()});
  expectError(fetch(portal.url()), "expired");
  EXPECT_THAT(portal.requests(), IsEmpty());
}

TEST_F(NetworkFaults, PortalThatTakesTlsConnectionsAndNeverAnswersTimesOut) {
  const RawServer portal(RawServer::neverAnswer);
  connectWith({.timeoutCap = 300ms});
  expectError(fetch("https" + portal.url().substr(4)), "timed out");
}

TEST_F(NetworkFaults, DescriptorsThatRunOutBeforeTheFirstRequestCostThatOneAlone) {
#ifdef VENDRIL_ASAN
  GTEST_SKIP() << "The sanitizer asks about addresses through a pipe, and takes them for bad";
#endif
  TestPortal portal;
  {
    const DescriptorsExhausted exhausted;
    EXPECT_NE(fetch(portal.url()).errorText(), "");
    EXPECT_NE(fetch(portal.url()).errorText(), "");
  }
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
}

TEST_F(NetworkFaults, DescriptorsThatRunOutLaterCostTheRequestsOfThatTimeAlone) {
  TestPortal idle;
  TestPortal portal;
  EXPECT_EQ(fetch(idle.url()).statusCode(), 200);
  {
    const DescriptorsExhausted exhausted;
    EXPECT_NE(fetch(portal.url()).errorText(), "");
    EXPECT_EQ(fetch(idle.url()).statusCode(), 200) << "its connection is open already";
  }
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
}

/// libcurl without the means for one of its functions.
class CurlFaults : public NetworkFaults,
                   public testing::WithParamInterface<CurlFailure::Function> {};

TEST_P(CurlFaults, FailEachRequestOnceAndTheNextOneWorks) {
  TestPortal portal;
  {
    const CurlFailure failure(GetParam());
    for (int i = 0; i < 3; ++i) {
      send(post(portal.url()));
    }
    ASSERT_TRUE(waitForOutcomes(3));
  }
  EXPECT_THAT(outcomes(), SizeIs(3));
  for (const Outcome& outcome : outcomes()) {
    EXPECT_NE(outcome.errorText(), "");
  }
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  EXPECT_THAT(portal.requests(), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Functions, CurlFaults,
                         testing::Values(CurlFailure::Function::load,
                                         CurlFailure::Function::globalInit,
                                         CurlFailure::Function::multiInit,
                                         CurlFailure::Function::multiAddHandle,
                                         CurlFailure::Function::easyInit));

TEST_F(NetworkFaults, EachRequestIsToldWhyLibcurlCouldNotBeLoaded) {
  const CurlFailure failure(CurlFailure::Function::load);
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(fetch("http://127.0.0.1/").errorText(), CurlFailure::kLoadFailure);
  }
}

/// More lookups that hang than there are threads for lookups.
TEST_F(NetworkFaults, ProxyResolversThatAllHangDelayEachRequestOnceAndLoseNone) {
  constexpr std::size_t kPortals = 40;
  std::promise<void> end;
  connectWith({.proxyLookupTime = 200ms}, [ended = end.get_future().share()](const std::string&) {
    ended.wait();
    return ProxyAnswer{};
  });
  std::vector<std::unique_ptr<TestPortal>> portals;
  for (std::size_t i = 0; i < kPortals; ++i) {
    portals.push_back(std::make_unique<TestPortal>());
    send(post(portals.back()->url()));
    send(post(portals.back()->url()));
  }
  ASSERT_TRUE(waitForOutcomes(2 * kPortals));
  for (const Outcome& outcome : outcomes()) {
    EXPECT_EQ(outcome.statusCode(), 200) << outcome.errorText();
  }
  connection_.reset();
  end.set_value();
}

/// Name servers as bad as the test wants them, in a network of its own.
class NameServerFaults : public NetworkFaults {
 protected:
  /// Makes 127.0.0.1 the only name server, and patience the system's own longest.
  void useNameServer() const {
    const auto file = home_.root() / "resolv.conf";
    writeFile(file, "nameserver 127.0.0.1\noptions timeout:30 attempts:5\n");
    ASSERT_EQ(::mount(file.c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr), 0);
  }

  /// A name server that takes questions and never answers.
  static UniqueFd silentNameServer() {
    constexpr in_port_t kDomainPort = 53;
    UniqueFd server(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kDomainPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return server;
  }

  PrivateHome home_;
};

TEST_F(NameServerFaults, ThatIsNotThereIsAnError) {
  runInOwnNamespace(Own::mountsAndNetwork, [this] {
    useNameServer();
    expectError(fetch("http://portal.example/"), "Could not resolve host: portal.example");
  });
}

TEST_F(NameServerFaults, ThatHangsTimesOutAndHoldsUpNoOtherPortal) {
  constexpr std::size_t kLookups = 50;
  runInOwnNamespace(Own::mountsAndNetwork, [this] {
    useNameServer();
    const UniqueFd server = silentNameServer();
    connectWith({.timeoutCap = 3s});
    TestPortal portal;
    for (std::size_t i = 0; i < kLookups; ++i) {
      send(post("http://portal" + std::to_string(i) + ".example/"));
    }
    send(post(portal.url()));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes()[0].statusCode(), 200);
    ASSERT_TRUE(waitForOutcomes(kLookups + 1));
    for (std::size_t i = 1; i <= kLookups; ++i) {
      expectError(outcomes()[i], "timed out");
    }
  });
}

TEST_F(NameServerFaults, ThatHangsIsNotWaitedForWhenTheConnectionIsDestroyed) {
  runInOwnNamespace(Own::mountsAndNetwork, [this] {
    useNameServer();
    const UniqueFd server = silentNameServer();
    connectWith({.drainTime = 200ms});
    send(post("http://portal.example/"));
    const auto begin = std::chrono::steady_clock::now();
    connection_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kTestDeadline);
    ASSERT_TRUE(waitForOutcomes(1));
    expectError(outcomes()[0], "cancelled");
  });
}

}  // namespace
}  // namespace vendril
