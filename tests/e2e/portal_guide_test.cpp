#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>

#include "support/InstalledAgent.h"
#include "support/MainLoop.h"
#include "support/MarkdownTable.h"
#include "support/PortalProcess.h"

namespace vendril {
namespace {

using ::testing::SizeIs;

constexpr std::size_t kFewestRows = 5;

/// What docs/portal-guide.md says, held against the installed agent and portal.
class PortalGuide : public ::testing::Test {
 protected:
  PortalGuide() { agent.publishSampleConfiguration(); }

  /// A cell of the guide with the portal's address in the place of PORTAL.
  std::string filled(std::string cell) const {
    constexpr std::string_view kPlaceholder = "PORTAL";
    for (std::size_t at = cell.find(kPlaceholder); at != std::string::npos;
         at = cell.find(kPlaceholder, at)) {
      cell.replace(at, kPlaceholder.size(), portal.url("/report"));
    }
    return cell;
  }

  /// Opens a link with the agent; what it logs from here on is that of the link.
  void open(const std::string& link) {
    start = agent.activatedLog().size();
    agent.openOnBus({link});
  }

  /// Waits until the agent has logged `text` about the link, or what stands after "…" in it.
  void expectLogged(const std::string& text, const std::string& link) {
    constexpr std::string_view kGap = "…";
    const std::size_t gap = text.find(kGap);
    const std::string tail = gap == std::string::npos ? text : text.substr(gap + kGap.size());
    EXPECT_TRUE(runMainLoopUntil([&] {
      static_cast<void>(agent.waitForActivatedLog("never written", std::chrono::milliseconds(10)));
      return agent.activatedLog().find(tail, start) != std::string::npos;
    })) << "for "
        << link << "\nexpected " << tail << "\ngot " << agent.activatedLog().substr(start);
  }

  const std::string guide = readFile(VENDRIL_SOURCE_DIR "/docs/portal-guide.md");
  PortalProcess portal{InstalledAgent::prefix() + "/bin/vendril-portal", {"--slow", "1"}};
  InstalledAgent agent;
  std::size_t start = 0;
};

TEST_F(PortalGuide, EveryExampleArrivesAsTheGuideSays) {
  const auto rows = tableAfter(guide, "### Examples");
  ASSERT_GE(rows.size(), kFewestRows);
  for (const auto& row : rows) {
    ASSERT_THAT(row, SizeIs(3));
    const std::string target = filled(row[1]).substr(portal.url().size());
    const std::size_t before = portal.process().out().size();
    open(filled(row[0]));
    EXPECT_TRUE(runMainLoopUntil([&] {
      static_cast<void>(
          portal.process().waitForOut("never printed", std::chrono::milliseconds(10)));
      return portal.process().out().find("POST " + target + "\n", before) != std::string::npos &&
             portal.process().out().find("  session_id = " + row[2] + "\n", before) !=
                 std::string::npos;
    })) << row[0]
        << "\nexpected " << target << " and " << row[2] << "\ngot "
        << portal.process().out().substr(before);
  }
}

TEST_F(PortalGuide, EveryAnswerIsLoggedAsTheGuideSays) {
  const auto rows = tableAfter(guide, "## What to answer");
  ASSERT_GE(rows.size(), kFewestRows);
  for (const auto& row : rows) {
    ASSERT_THAT(row, SizeIs(3));
    const std::string link =
        filled("vendril://join?portalURI=PORTAL?answer=" + row[0] + "&session_id=7");
    open(link);
    expectLogged(row[1] + "\n", link);
    if (!row[2].empty()) {
      expectLogged(row[2] + "\n", link);
    }
  }
}

TEST_F(PortalGuide, EveryMistakeLeavesTheLineThatTheGuideNames) {
  const auto rows = tableAfter(guide, "## Mistakes, and the line that each one leaves in the log");
  ASSERT_GE(rows.size(), kFewestRows);
  for (const auto& row : rows) {
    ASSERT_THAT(row, SizeIs(3));
    open(filled(row[1]));
    expectLogged(filled(row[2]), row[1]);
  }
  EXPECT_EQ(portal.process().out().find("POST"), std::string::npos)
      << "one of the mistakes was none: " << portal.process().out();
}

}  // namespace
}  // namespace vendril
