// What may go wrong around the installed agent while it runs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>

#include "support/LinkToReportFixture.h"
#include "support/MainLoop.h"
#include "support/TestCertificate.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kSuccess = "has been successfully sent with HTTP status code: 200";

class Faults : public LinkToReportFixture {
 protected:
  /// Opens a link and waits until the portal has been told; the agent is running.
  void expectLinkArrives(ChildProcess& process) {
    const std::size_t before = portal.requests().size();
    agent.openOnBus({link("afterwards")});
    EXPECT_TRUE(portal.waitForRequests(before + 1)) << process.err();
  }

  /// Changes the soft limit of a running process and returns the one before.
  static rlimit limit(const ChildProcess& process, __rlimit_resource resource, rlim_t value) {
    rlimit before{};
    EXPECT_EQ(::prlimit(process.pid(), resource, nullptr, &before), 0);
    const rlimit now{value, before.rlim_max};
    EXPECT_EQ(::prlimit(process.pid(), resource, &now, nullptr), 0);
    return before;
  }
};

TEST_F(Faults, RequestUnderWayWhenTheBusGoesIsFinished) {
  portal.answerWith({.delay = std::chrono::milliseconds(300)});
  const auto process = agent.startAndWait();
  agent.openOnBus({link("7")});
  ASSERT_TRUE(portal.waitForRequests(1)) << process->err();
  agent.bus().stop();
  EXPECT_EQ(process->waitForExit(), 0);
  EXPECT_THAT(process->err(), HasSubstr(kSuccess));
}

TEST_F(Faults, LinkAfterARestartOfTheBusIsReportedByANewAgent) {
  const auto process = agent.startAndWait();
  agent.bus().stop();
  agent.bus().start();
  EXPECT_EQ(InstalledAgent::run({"gio", "open", link("after")}), 0);
  EXPECT_TRUE(portal.waitForRequests(1)) << agent.activatedLog();
  EXPECT_EQ(process->waitForExit(), 0) << process->err();
}

TEST_F(Faults, AgentWithoutStandardStreamsHasTheNullDeviceInTheirPlaces) {
  const ChildProcess process({"sh", "-c", "exec \"$0\" <&- >&- 2>&-", InstalledAgent::program()});
  ASSERT_TRUE(runMainLoopUntil([this] { return agent.ownerProcess().has_value(); }));
  agent.openOnBus({link("7")});
  EXPECT_TRUE(portal.waitForRequests(1));
  const std::filesystem::path descriptors = "/proc/" + std::to_string(process.pid()) + "/fd";
  for (const char* stream : {"0", "1", "2"}) {
    EXPECT_EQ(std::filesystem::read_symlink(descriptors / stream), "/dev/null") << stream;
  }
}

TEST_F(Faults, DescriptorsThatRunOutCostOneLinkItsReportAndNoOtherAnything) {
#ifdef VENDRIL_ASAN
  GTEST_SKIP() << "The sanitizer asks about addresses through a pipe, and takes them for bad";
#endif
  const auto process = agent.startAndWait();
  const rlimit before = limit(*process, RLIMIT_NOFILE, openDescriptors(process->pid()));
  agent.openOnBus({link("lost")});
  ASSERT_TRUE(process->waitForErr(" failed with error: ")) << process->err();
  limit(*process, RLIMIT_NOFILE, before.rlim_cur);
  expectLinkArrives(*process);
  EXPECT_TRUE(process->waitForErr(kSuccess)) << process->err();
}

TEST_F(Faults, AgentWorksWithinAMemoryLimit) {
#if defined(VENDRIL_ASAN) || defined(VENDRIL_TSAN)
  GTEST_SKIP() << "The sanitizers' shadow memory exceeds any limit";
#endif
  constexpr std::size_t kLinks = 200;
  constexpr rlim_t kHeap = rlim_t{64} * 1024 * 1024;
  portal.answerWith({.status = 500, .body = std::string(std::size_t{1024} * 1024, 'x')});
  // Nobody reads the log, which has a megabyte for each link.
  ChildProcess process({"sh", "-c", "exec \"$0\" 2>/dev/null", InstalledAgent::program()});
  ASSERT_TRUE(runMainLoopUntil([this] { return agent.ownerProcess().has_value(); }));
  limit(process, RLIMIT_DATA, kHeap);
  for (std::size_t i = 1; i <= kLinks; ++i) {
    agent.openOnBus({link(std::to_string(i))});
    ASSERT_TRUE(portal.waitForRequests(i)) << i;
  }
  expectLinkArrives(process);
  process.signal(SIGTERM);
  EXPECT_EQ(process.waitForExit(), 0);
}

/// A portal that speaks no TLS newer than 1.1, in the words of openssl's own server.
class OldPortal {
 public:
  explicit OldPortal(const TestCertificate& certificate)
      : server_({"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert",
                 certificate.certificateFile(), "-key", certificate.keyFile(), "-no_tls1_2",
                 "-no_tls1_3", "-cipher", "ALL:@SECLEVEL=0", "-www"}) {
    EXPECT_TRUE(server_.waitForOut("ACCEPT ")) << server_.err();
    EXPECT_TRUE(server_.waitForOut("\n", kTestDeadline));
    const std::string& out = server_.out();
    const std::size_t line = out.find("ACCEPT ");
    const std::size_t port = out.find(':', line) + 1;
    port_ = out.substr(port, out.find('\n', port) - port);
  }

  const std::string& port() const { return port_; }

 private:
  ChildProcess server_;
  std::string port_;
};

TEST_F(Faults, PortalWithAnOldTlsIsRefusedEvenWhereTheSystemWouldTakeIt) {
  const std::string configuration = (agent.home().root() / "openssl.cnf").string();
  writeFile(configuration,
            "openssl_conf = all\n[all]\nssl_conf = ssl\n[ssl]\nsystem_default = weak\n"
            "[weak]\nMinProtocol = TLSv1\nCipherString = ALL:@SECLEVEL=0\n");
  const ScopedVariable weakSystem("OPENSSL_CONF", configuration);
  const TestCertificate certificate;
  const OldPortal old(certificate);
  ChildProcess client({"openssl", "s_client", "-connect", "127.0.0.1:" + old.port(), "-brief"});
  ASSERT_EQ(client.waitForExit(), 0) << client.err();
  ASSERT_THAT(client.err(), HasSubstr("TLSv1.1")) << "the system would take it";

  const auto process = agent.startAndWait();
  agent.openOnBus({linkTo("https://127.0.0.1:" + old.port() + "/", "7")});
  ASSERT_TRUE(process->waitForErr(" failed with error: "));
  EXPECT_TRUE(process->waitForErr("protocol version")) << process->err();
  EXPECT_THAT(process->err(), Not(HasSubstr("certificate")));
}

}  // namespace
}  // namespace vendril
