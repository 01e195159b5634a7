#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <set>

#include "support/RawServer.h"
#include "support/TestPortal.h"
#include "support/ThreadActivity.h"
#include "support/UrlConnectionFixture.h"

namespace vendril {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

/// Many requests at once, the end of the connection, quiet times and proxies.
class UrlConnectionLoadTest : public UrlConnectionFixture {
 protected:
  static std::size_t completionsBefore(std::size_t request, const std::vector<Outcome>& outcomes) {
    const auto position =
        std::find_if(outcomes.begin(), outcomes.end(),
                     [request](const Outcome& outcome) { return outcome.request == request; });
    return static_cast<std::size_t>(position - outcomes.begin());
  }

  /// The highest number of open descriptors until `count` requests have completed.
  std::size_t peakDescriptorsUntil(std::size_t count) const {
    std::size_t peak = 0;
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (outcomes().size() < count && std::chrono::steady_clock::now() < deadline) {
      peak = std::max(peak, openDescriptors());
      std::this_thread::sleep_for(5ms);
    }
    return peak;
  }

  static std::vector<std::optional<int>> statusCodes(const std::vector<Outcome>& outcomes) {
    std::vector<std::optional<int>> codes;
    for (const Outcome& outcome : outcomes) {
      codes.push_back(outcome.statusCode());
    }
    return codes;
  }

  static std::set<std::size_t> requestNumbers(const std::vector<Outcome>& outcomes) {
    std::set<std::size_t> numbers;
    for (const Outcome& outcome : outcomes) {
      numbers.insert(outcome.request);
    }
    return numbers;
  }
};

TEST_F(UrlConnectionLoadTest, CarriesAThousandRequestsOnFewSocketsAndHoldsUpNoOtherPortal) {
  constexpr std::size_t kRequests = 1000;
  TestPortal slow;
  TestPortal fast;
  slow.answerWith({.delay = 200ms});
  const std::size_t descriptorsBefore = openDescriptors();

  for (std::size_t i = 0; i < kRequests; ++i) {
    send(post(slow.url(), "n=" + std::to_string(i)));
  }
  send(post(fast.url()));
  const std::size_t peak = peakDescriptorsUntil(kRequests + 1);

  ASSERT_TRUE(waitForOutcomes(kRequests + 1));
  EXPECT_THAT(statusCodes(outcomes()), Each(200));
  EXPECT_EQ(requestNumbers(outcomes()).size(), kRequests + 1);
  EXPECT_EQ(slow.requests().size(), kRequests);
  // The portals run in this process: two descriptors for each connection, and some for the rest.
  EXPECT_LE(peak - descriptorsBefore, 2 * (CurlLimits{}.maxSocketsPerOrigin + 1) + 16);
  EXPECT_LT(completionsBefore(kRequests, outcomes()), kRequests / 2);
}

TEST_F(UrlConnectionLoadTest, GetsPastAnyNumberOfDeadPortals) {
  connectWith({.maxSockets = 16, .maxSocketsPerOrigin = 8, .drainTime = 0ms});
  const RawServer first(RawServer::neverAnswer);
  const RawServer second(RawServer::neverAnswer);
  const RawServer third(RawServer::neverAnswer);
  for (int i = 0; i < 50; ++i) {
    send(post(first.url()));
    send(post(second.url()));
    send(post(third.url()));
  }
  TestPortal portal;
  send(post(portal.url()));
  ASSERT_TRUE(waitForOutcomes(1));
  EXPECT_EQ(outcomes()[0].statusCode(), 200) << outcomes()[0].errorText();
}

TEST_F(UrlConnectionLoadTest, CountsTheTimeoutFromTheSocket) {
  constexpr int kRequests = 20;
  connectWith({.maxSockets = 4, .maxSocketsPerOrigin = 2});
  TestPortal portal;
  portal.answerWith({.delay = 200ms});
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kRequests; ++i) {
    UrlRequest request = post(portal.url());
    request.timeoutInterval = 1.5s;
    send(request);
  }
  ASSERT_TRUE(waitForOutcomes(kRequests));
  EXPECT_THAT(statusCodes(outcomes()), Each(200));
  EXPECT_GT(std::chrono::steady_clock::now() - start, 1.5s) << "no request waited that long";
  EXPECT_EQ(portal.connections(), 2U);
}

TEST_F(UrlConnectionLoadTest, SleepsWithoutATimerWhenIdle) {
  TestPortal portal;
  fetch(portal.url());
  const auto thread = threadNamed("vendril-http");
  ASSERT_TRUE(thread);
  const long afterOne = contextSwitches(*thread);
  fetch(portal.url());
  EXPECT_GT(contextSwitches(*thread), afterOne) << "a busy thread counts as idle";

  ASSERT_TRUE(waitUntilAsleep(*thread));
  std::this_thread::sleep_for(200ms);
  const long before = contextSwitches(*thread);
  std::this_thread::sleep_for(2s);
  EXPECT_EQ(contextSwitches(*thread), before);
}

TEST_F(UrlConnectionLoadTest, FinishesRequestsUnderWayWhenItIsDestroyed) {
  connectWith({.maxSockets = 2, .maxSocketsPerOrigin = 1, .drainTime = 30s});
  TestPortal portal;
  portal.answerWith({.delay = 100ms});
  for (int i = 0; i < 5; ++i) {
    send(post(portal.url()));
  }
  connection_.reset();
  ASSERT_TRUE(waitForOutcomes(5));
  EXPECT_THAT(statusCodes(outcomes()), Each(200));
}

TEST_F(UrlConnectionLoadTest, CancelsEachRequestOnceThatOutlastsItsDestruction) {
  connectWith({.maxSockets = 4, .maxSocketsPerOrigin = 2, .drainTime = 100ms});
  const RawServer server(RawServer::neverAnswer);
  for (int i = 0; i < 10; ++i) {
    send(post(server.url()));
  }
  ASSERT_TRUE(server.waitForAccepts(2));
  connection_.reset();
  queue_.reset();
  ASSERT_TRUE(waitForOutcomes(10));
  EXPECT_THAT(outcomes(), SizeIs(10));
  EXPECT_EQ(requestNumbers(outcomes()).size(), 10U);
  for (const Outcome& outcome : outcomes()) {
    EXPECT_EQ(outcome.errorText(), "The request was cancelled");
  }
}

TEST_F(UrlConnectionLoadTest, CompletesARequestThatIsSentRightBeforeItsDestruction) {
  const ClosedPort port;
  for (std::size_t i = 1; i <= 50; ++i) {
    connectWith({});
    send(post(port.url()));
    connection_.reset();
    ASSERT_TRUE(waitForOutcomes(i));
  }
}

TEST_F(UrlConnectionLoadTest, UsesTheProxyOfTheEnvironmentAndAsksNobodyElse) {
  TestPortal proxy;
  const EnvironmentVariable variable("http_proxy", proxy.url());
  std::atomic<int> asked = 0;
  connectWith({}, [&](const std::string&) {
    ++asked;
    return ProxyAnswer{};
  });
  EXPECT_EQ(fetch("http://portal.invalid/path").statusCode(), 200);
  ASSERT_THAT(proxy.requests(), SizeIs(1));
  EXPECT_EQ(proxy.requests()[0].path, "http://portal.invalid/path");
  EXPECT_EQ(asked, 0);
  connection_.reset();
}

TEST_F(UrlConnectionLoadTest, GoesPastTheProxyOfTheEnvironmentWhereNoProxySaysSo) {
  TestPortal proxy;
  TestPortal portal;
  const EnvironmentVariable variable("all_proxy", proxy.url());
  const EnvironmentVariable exception("no_proxy", "127.0.0.1");
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  EXPECT_THAT(portal.requests(), SizeIs(1));
  EXPECT_THAT(proxy.requests(), IsEmpty());
  connection_.reset();
}

TEST_F(UrlConnectionLoadTest, UsesTheProxyThatTheResolverNamesAndTellsItOnlyTheOrigin) {
  TestPortal proxy;
  std::promise<std::pair<std::string, std::thread::id>> asked;
  connectWith({}, [&](const std::string& url) {
    asked.set_value({url, std::this_thread::get_id()});
    return ProxyAnswer{{"http://127.0.0.1:" + std::to_string(proxy.port())}};
  });
  EXPECT_EQ(fetch("http://portal.invalid/path?session=secret").statusCode(), 200);
  ASSERT_THAT(proxy.requests(), SizeIs(1));
  EXPECT_EQ(proxy.requests()[0].path, "http://portal.invalid/path");
  const auto [url, thread] = asked.get_future().get();
  EXPECT_EQ(url, "http://portal.invalid:80/");
  EXPECT_NE(thread, std::this_thread::get_id());
  connection_.reset();
}

TEST_F(UrlConnectionLoadTest, ReachesThePortalByTheDesktopsOwnResolver) {
  connectWith({}, gioProxyResolver());
  TestPortal portal;
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
}

TEST_F(UrlConnectionLoadTest, AsksAResolverThatAlwaysAnswersTheSameOnlyOnce) {
  TestPortal portal;
  std::atomic<int> asked = 0;
  connectWith({}, [&](const std::string& url) {
    ++asked;
    return noProxy(url);
  });
  for (int i = 0; i < 3; ++i) {
    fetch(portal.url());
  }
  EXPECT_EQ(asked, 1);
  connection_.reset();
}

TEST_F(UrlConnectionLoadTest, GoesDirectlyWhenTheResolverFails) {
  TestPortal portal;
  connectWith({}, [](const std::string&) -> ProxyAnswer { throw std::runtime_error("no answer"); });
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
}

/// A resolver that keeps its answer about one portal to itself until it is told to give it.
class SlowResolverTest : public UrlConnectionLoadTest {
 protected:
  void connectWithSlowResolverFor(int port, const CurlLimits& limits = {}) {
    connectWith(limits, [mark = ":" + std::to_string(port) + "/", asked = asked_,
                         answer = mayAnswer_.get_future().share()](const std::string& url) {
      if (url.find(mark) != std::string::npos) {
        ++*asked;
        answer.wait();
      }
      return ProxyAnswer{{"direct://"}};
    });
  }

  std::promise<void> mayAnswer_;
  std::shared_ptr<std::atomic<int>> asked_ = std::make_shared<std::atomic<int>>(0);
};

TEST_F(SlowResolverTest, HoldsUpNoOtherPortal) {
  TestPortal portal;
  TestPortal other;
  connectWithSlowResolverFor(portal.port());
  for (int i = 0; i < 50; ++i) {
    send(post(portal.url()));
  }
  send(post(other.url()));
  ASSERT_TRUE(waitForOutcomes(1));
  EXPECT_EQ(outcomes()[0].request, 50U);
  EXPECT_THAT(portal.requests(), IsEmpty());

  mayAnswer_.set_value();
  ASSERT_TRUE(waitForOutcomes(51));
  EXPECT_THAT(statusCodes(outcomes()), Each(200));
  EXPECT_EQ(*asked_, 1);
}

TEST_F(SlowResolverTest, IsNotWaitedForLongerThanItsTime) {
  TestPortal portal;
  connectWithSlowResolverFor(portal.port(), {.proxyLookupTime = 100ms});
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  EXPECT_EQ(*asked_, 1);
  mayAnswer_.set_value();
}

TEST_F(SlowResolverTest, IsNotWaitedForWhenTheConnectionIsDestroyed) {
  TestPortal portal;
  connectWithSlowResolverFor(portal.port(), {.drainTime = 50ms});
  send(post(portal.url()));
  connection_.reset();
  ASSERT_TRUE(waitForOutcomes(1));
  EXPECT_EQ(outcomes()[0].errorText(), "The request was cancelled");
  mayAnswer_.set_value();
}

}  // namespace
}  // namespace vendril
