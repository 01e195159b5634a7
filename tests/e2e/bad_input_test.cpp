#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/LinkToReportFixture.h"

namespace vendril {
namespace {

constexpr const char* kFallback = "Failed to load configuration from persistent storage: '";

/// A running agent that is fed something bad. Whatever it was, the next link must work.
class BadInput : public LinkToReportFixture {
 protected:
  void TearDown() override {
    const std::size_t before = portal.requests().size();
    agent.openOnBus({link("afterwards")});
    EXPECT_TRUE(portal.waitForRequests(before + 1)) << process->err();
    EXPECT_EQ(process->waitForExit(std::chrono::milliseconds(0)), std::nullopt)
        << "the agent has died";
  }

  void expectLine(const std::string& text) {
    EXPECT_TRUE(process->waitForErr(text)) << "expected: " << text << "\ngot: " << process->err();
  }

  /// How often `text` stands in the log.
  std::size_t countOf(const std::string& text) const {
    std::size_t count = 0;
    for (std::size_t at = process->err().find(text); at != std::string::npos;
         at = process->err().find(text, at + text.size())) {
      ++count;
    }
    return count;
  }

  std::unique_ptr<ChildProcess> process = agent.startAndWait();
};

TEST_F(BadInput, TextThatIsNoUrlIsLoggedAndDropped) {
  agent.openOnBus({"vendril:a b", ""});
  expectLine("Failed to decode URL from event descriptor\n");
}

TEST_F(BadInput, LinkWithAMalformedEscapeIsShownAsReceived) {
  agent.openOnBus({"vendril:%zz?portalURI=http://127.0.0.1/?session_id=7"});
  expectLine(
      "Parsing failed: Parameter portalURI not found in URL: "
      "vendril:%zz?portalURI=http://127.0.0.1/?session_id=7");
}

TEST_F(BadInput, MalformedConfigurationFallsBackToTheDefault) {
  writeFile(agent.configurationPath(), "<plist><dict><key>");
  agent.openOnBus({link("7")});
  expectLine(kFallback + agent.configurationPath() + "'");
  ASSERT_TRUE(portal.waitForRequests(1));
  EXPECT_THAT(portal.requests()[0].formFields["data"], ::testing::HasSubstr("3.21.0"));
}

TEST_F(BadInput, DeeplyNestedConfigurationFallsBackToTheDefault) {
  std::string nested = "<plist version=\"1.0\">";
  for (int i = 0; i < 100'000; ++i) {
    nested += "<array>";
  }
  writeFile(agent.configurationPath(), nested);
  agent.openOnBus({link("7")});
  expectLine(kFallback + agent.configurationPath() + "'");
}

TEST_F(BadInput, FifoAtTheConfigurationPathNeverBlocks) {
  std::filesystem::remove(agent.configurationPath());
  ASSERT_EQ(::mkfifo(agent.configurationPath().c_str(), 0600), 0);
  agent.openOnBus({link("7")});
  expectLine(kFallback + agent.configurationPath() + "'");
}

TEST_F(BadInput, DirectoryAtTheConfigurationPathFallsBackToTheDefault) {
  std::filesystem::remove(agent.configurationPath());
  std::filesystem::create_directory(agent.configurationPath());
  agent.openOnBus({link("7")});
  expectLine(kFallback + agent.configurationPath() + "'");
}

TEST_F(BadInput, DeviceAtTheConfigurationPathFallsBackToTheDefault) {
  std::filesystem::remove(agent.configurationPath());
  std::filesystem::create_symlink("/dev/zero", agent.configurationPath());
  agent.openOnBus({link("7")});
  expectLine(kFallback + agent.configurationPath() + "'");
}

TEST_F(BadInput, EachUnusablePortalAddressIsOneTransportError) {
  const std::vector<std::string> addresses{
      "gopher://127.0.0.1/", "dict://127.0.0.1/",  "not%20a%20url", "http://", "http:///x", "://",
      "javascript:alert(1)", "file:///nonexistent"};
  for (const std::string& address : addresses) {
    agent.openOnBus({"vendril:?portalURI=" + address + "?session_id=odd"});
  }
  EXPECT_TRUE(runMainLoopUntil([&] {
    static_cast<void>(process->waitForErr("never written", std::chrono::milliseconds(10)));
    return countOf(" failed with error: ") >= addresses.size();
  })) << process->err();
  EXPECT_EQ(countOf(" failed with error: "), addresses.size()) << process->err();
}

TEST_F(BadInput, PortalThatRefusesIsATransportError) {
  agent.openOnBus({linkTo("http://127.0.0.1:1/", "7")});
  expectLine(" failed with error: ");
}

TEST_F(BadInput, ErrorStatusIsLoggedWithItsBody) {
  portal.answerNextWith({.status = 500, .body = "out of order"});
  agent.openOnBus({link("7")});
  expectLine(" failed with HTTP status code: 500");
  expectLine(" response data: out of order");
}

TEST_F(BadInput, BodyOfAPortalCannotForgeARecord) {
  portal.answerNextWith({.status = 500, .body = "x\n2026-01-01 00:00:00.000 vendril[1] forged"});
  agent.openOnBus({link("7")});
  expectLine(" response data: x\n\t2026-01-01 00:00:00.000 vendril[1] forged");
}

}  // namespace
}  // namespace vendril
