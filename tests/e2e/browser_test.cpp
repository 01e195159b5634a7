#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "support/Browser.h"
#include "support/InstalledAgent.h"
#include "support/MainLoop.h"
#include "support/PortalProcess.h"
#include "support/VirtualDisplay.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;

constexpr const char* kNewestReport = "#list > li:first-child";

/// A user with a browser, the installed agent that the desktop has not started yet, and the page of
/// the installed practice portal.
class BrowserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const auto& missing : {VirtualDisplay::missingProgram(), Browser::missingProgram()}) {
      if (missing) {
        GTEST_SKIP() << *missing << " is not installed";
      }
    }
    agent.publishSampleConfiguration();
    display.emplace(agent.home().root().string());
    browser.emplace(agent.home(), display->name(), policies());
    browser->open(portal.url("/"));
    ASSERT_TRUE(browser->waitForText("#state", "Listening")) << browser->text("body");
  }

  /// Lets pages of the portal open links in both schemes without a question to the user.
  std::string policies() const {
    const std::string origins = R"("allowed_origins": [")" + portal.url() + R"("])";
    return R"({"AutoLaunchProtocolsFromOrigins": [{"protocol": "vendril", )" + origins +
           R"(}, {"protocol": "mervale", )" + origins + "}]}";
  }

  /// True as soon as the agent has logged `text` after it has sent the report of the session.
  bool waitForOutcome(const std::string& session, const std::string& text) {
    return runMainLoopUntil([&] {
      static_cast<void>(agent.waitForActivatedLog("never written", std::chrono::milliseconds(10)));
      const std::size_t sent = agent.activatedLog().find("session_id=" + session + "&command");
      return agent.activatedLog().find(text, sent) != std::string::npos;
    });
  }

  /// Waits until the newest report on the page is that of the session.
  void expectReportOf(const std::string& session) {
    ASSERT_TRUE(browser->waitForText("#list", "Session " + session))
        << browser->text("body") << "\n"
        << agent.activatedLog();
    EXPECT_EQ(browser->text(std::string(kNewestReport) + " .session"), "Session " + session);
  }

  PortalProcess portal{InstalledAgent::prefix() + "/bin/vendril-portal",
                       {"--slow", "1", "--text", "out of order", "--quiet"}};
  InstalledAgent agent;
  std::optional<VirtualDisplay> display;
  std::optional<Browser> browser;
};

class BrowserScheme : public BrowserTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(BrowserScheme, ClickOnALinkStartsTheAgentWhoseReportAppearsOnThePage) {
  ASSERT_EQ(agent.ownerProcess(), std::nullopt) << "the agent runs already";
  browser->click("input[value=" + std::string(GetParam()) + "]");
  const std::string session = browser->evaluate("document.getElementById('session').value");
  ASSERT_THAT(browser->text("#link"), ::testing::StartsWith(std::string(GetParam()) + "://join?"));
  browser->click("#open");
  expectReportOf(session);
  EXPECT_THAT(browser->text(std::string(kNewestReport) + " .client"),
              HasSubstr("Brelto Orvanta 4.0"));
  EXPECT_THAT(browser->text(std::string(kNewestReport) + " .body"), HasSubstr("command=set_data"));
  EXPECT_TRUE(agent.waitForActivatedLog("sent with HTTP status code: 200")) << agent.activatedLog();
}

TEST_F(BrowserTest, EveryAnswerOnThePageIsGivenAndLoggedAsThePageSays) {
  for (const auto& [answer, badge] : {std::pair("204", "status 204"),
                                      {"500", "status 500"},
                                      {"redirect", "status 302"},
                                      {"slow", "status 200 after 1 s"},
                                      {"reset", "connection reset"},
                                      {"200", "status 200"}}) {
    browser->click("#new-session");
    browser->click("input[value='" + std::string(answer) + "']");
    const std::string session = browser->evaluate("document.getElementById('session').value");
    browser->click("#open");
    expectReportOf(session);
    EXPECT_EQ(browser->text(std::string(kNewestReport) + " .badge"),
              "Answer: " + std::string(badge));
    const std::string outcome = browser->text("#outcome");
    EXPECT_THAT(outcome, HasSubstr(" with "));
    EXPECT_TRUE(waitForOutcome(session, outcome)) << outcome << "\n" << agent.activatedLog();
  }
}

TEST_F(BrowserTest, ListIsCountedAndCanBeCleared) {
  EXPECT_EQ(browser->text("#count"), "0");
  EXPECT_THAT(browser->text("#empty"), HasSubstr("Nothing has arrived yet."));
  browser->click("#open");
  expectReportOf(browser->evaluate("document.getElementById('session').value"));
  EXPECT_EQ(browser->text("#count"), "1");
  EXPECT_EQ(browser->evaluate("document.getElementById('empty').checkVisibility()"), "false");
  browser->click("#clear");
  EXPECT_EQ(browser->text("#count"), "0");
  EXPECT_EQ(browser->evaluate("document.getElementById('empty').checkVisibility()"), "true");
}

TEST_F(BrowserTest, KeyboardAloneOpensALink) {
  browser->click("#session");
  for (int keys = 0; browser->evaluate("document.activeElement.id") != "open"; ++keys) {
    ASSERT_LT(keys, 20) << "the link never gets the focus";
    EXPECT_NE(browser->evaluate("getComputedStyle(document.activeElement.matches('[type=radio]') "
                                "? document.activeElement.nextElementSibling "
                                ": document.activeElement).outlineStyle"),
              "none")
        << "the focus cannot be seen on " << browser->evaluate("document.activeElement.outerHTML");
    browser->typeIntoFocus(Browser::kTab);
  }
  browser->typeIntoFocus(Browser::kEnter);
  expectReportOf(browser->evaluate("document.getElementById('session').value"));
}

TEST_F(BrowserTest, EveryControlHasANameForAScreenReader) {
  browser->click("#open");
  expectReportOf(browser->evaluate("document.getElementById('session').value"));
  browser->click("summary");
  const int controls = std::stoi(browser->evaluate(
      "[...document.querySelectorAll('a, button, input, summary, [tabindex=\"0\"]')]"
      ".map((control, index) => control.dataset.control = index).length"));
  EXPECT_GT(controls, 15);
  for (int control = 0; control < controls; ++control) {
    const std::string selector = "[data-control='" + std::to_string(control) + "']";
    EXPECT_NE(browser->accessibleName(selector), "")
        << browser->evaluate("document.querySelector(\"" + selector + "\").outerHTML");
  }
}

TEST_F(BrowserTest, MarkupInAReportIsShownAsText) {
  const std::string markup = "<img src=x onerror=document.title='broken'><b id=injected>b</b>";
  httplib::Client client("127.0.0.1", portal.port());
  ASSERT_TRUE(client.Post("/report?" + markup, {{"X-Odd", markup}},
                          "session_id=" + markup + "&data={\"" + markup + "\":\"" + markup +
                              "\"}&" + markup + "=" + markup,
                          markup));
  ASSERT_TRUE(browser->waitForText("#list", "Session " + markup)) << browser->text("body");
  EXPECT_THAT(browser->text(std::string(kNewestReport) + " .client"), HasSubstr(markup));
  EXPECT_EQ(browser->evaluate("document.querySelectorAll('#list img, #injected').length"), "0");
  EXPECT_EQ(browser->evaluate("document.title"), "Vendril practice portal");
}

// The contrast ratio that the Web Content Accessibility Guidelines define, of every element that
// shows a text of its own; names the elements that fall short of 4.5, level AA.
constexpr const char* kTooFaint = R"((() => {
  const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
  const luminance = (colour) => channels(colour).slice(0, 3)
    .map((value) => value / 255)
    .map((value) => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4)
    .reduce((sum, value, index) => sum + value * [0.2126, 0.7152, 0.0722][index], 0);
  const isOpaque = (colour) => (channels(colour)[3] ?? 1) === 1;
  const background = (element) => {
    const colour = getComputedStyle(element).backgroundColor;
    return isOpaque(colour) ? colour : background(element.parentElement);
  };
  const ratio = (element) => {
    const shades = [getComputedStyle(element).color, background(element)].map(luminance);
    return (Math.max(...shades) + 0.05) / (Math.min(...shades) + 0.05);
  };
  const texts = [...document.body.querySelectorAll('*')].filter((element) =>
    element.checkVisibility() && [...element.childNodes].some((node) =>
      node.nodeType === Node.TEXT_NODE && node.data.trim() !== ''));
  const faint = texts.filter((element) => ratio(element) < 4.5);
  return texts.length + ' texts;' + faint.map((element) =>
    ' ' + element.outerHTML + ': ' + ratio(element).toFixed(2)).join();
})())";

/// The page with one report on it, in the colours that the user prefers.
class BrowserColours : public BrowserTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(BrowserColours, EveryTextStandsOutFromItsBackground) {
  browser->preferColours(GetParam());
  browser->resizeTo(1280, 1080);
  browser->click("#open");
  expectReportOf(browser->evaluate("document.getElementById('session').value"));
  EXPECT_EQ(browser->evaluate("matchMedia('(prefers-color-scheme: " + std::string(GetParam()) +
                              ")').matches"),
            "true");
  ASSERT_TRUE(browser->waitForText("#state", "Listening"));
  EXPECT_THAT(browser->evaluate(kTooFaint), ::testing::MatchesRegex("[0-9][0-9]+ texts;"));
  // Kept for scripts/portal-screenshots.
  browser->saveScreenshot(VENDRIL_BUILD_DIR "/portal-" + std::string(GetParam()) + ".png");
}

INSTANTIATE_TEST_SUITE_P(Colours, BrowserColours, ::testing::Values("light", "dark"));
INSTANTIATE_TEST_SUITE_P(Schemes, BrowserScheme, ::testing::Values("vendril", "mervale"));

}  // namespace
}  // namespace vendril
