#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "platform/freedesktop/PlistFiles.h"
#include "support/JsonText.h"
#include "support/ToolFixture.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;

/// ESC and CSI, a carriage return, a delete, and marks that change the direction of writing.
constexpr const char* kHostile = "\x1B[2J\r\x7F\u009B1m\u202Eevil\u2066";
constexpr const char* kHarmless =
    "\\x1b[2J\\x0d\\x7f\\xc2\\x9b1m\\xe2\\x80\\xaeevil\\xe2\\x81\\xa6";

/// What vendrilctl leaves behind, and what it lets through to a terminal.
class ToolTrace : public ToolFixture {
 protected:
  /// Every command that only reads.
  const std::vector<Words> reading{
      {"status"},         {"explain", link("7")},   {"report"}, {"report", "--skip-search"},
      {"config", "show"}, {"login-item", "status"}, {"log"},    {"--version"},
      {"--help"}};

  void expectNoTrace() {
    const auto before = snapshot();
    for (Words words : reading) {
      run(words);
      EXPECT_EQ(snapshot(), before) << ::testing::PrintToString(words);
      words.emplace_back("--json");
      run(words);
      EXPECT_EQ(snapshot(), before) << ::testing::PrintToString(words);
    }
    EXPECT_EQ(agent.ownerProcess(), std::nullopt) << "nobody was started";
    EXPECT_EQ(portal.requests().size(), 0U);
  }

  static void expectPrintable(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto code = static_cast<unsigned char>(text[i]);
      const bool isIndent = text[i] == '\t' && i > 0 && text[i - 1] == '\n';
      EXPECT_TRUE(code >= 0x20 || text[i] == '\n' || isIndent) << text;
      EXPECT_NE(code, 0x7F) << text;
    }
    for (const char* mark : {"\u009B", "\u202E", "\u2066"}) {
      EXPECT_EQ(text.find(mark), std::string::npos) << text;
    }
  }

  /// Runs a command both ways; what it prints may be shown. The text, for more.
  static std::string expectHarmless(Words words) {
    const ProgramRun text = run(words);
    expectPrintable(text.out);
    expectPrintable(text.err);
    words.emplace_back("--json");
    const ProgramRun object = run(words);
    expectPrintable(object.out);
    EXPECT_TRUE(std::all_of(object.out.begin(), object.out.end(), [](unsigned char c) {
      return c < 0x80;
    })) << object.out;
    parseJsonObject(object.out);
    return text.out;
  }
};

TEST_F(ToolTrace, ReadingCommandsLeaveAnEmptyHomeAsItIs) {
  std::filesystem::remove_all(agent.home().config() / "brelto");
  expectNoTrace();
}

TEST_F(ToolTrace, ReadingCommandsLeaveAHealthyHomeAsItIs) {
  ASSERT_EQ(run({"register"}).status, 0);
  ASSERT_EQ(run({"login-item", "on"}).status, 0);
  expectNoTrace();
}

TEST_F(ToolTrace, ReadingCommandsLeaveABrokenHomeAsItIs) {
  writeFile(agent.configurationPath(), "<plist>");
  writeFile(agent.home().config() / "brelto/Preferences/com.brelto.vendril.plist", "<plist>");
  writeFile(associations, "no entry\n");
  files.autostart("old.desktop", desktopEntryText("Brelto Orvanta", "/nonexistent/orvanta"));
  writeFile(agent.home().data() / "applications/com.brelto.vendril.desktop", "nothing");
  expectNoTrace();
}

TEST_F(ToolTrace, ValuesOfTheConfigurationReachTheTerminalHarmless) {
  ASSERT_TRUE(PlistFiles().writeDictionary(
      {{"PublishedConfiguration", Object{{"AppName", "\u202Eevil\u009B"},
                                         {"SIPReady", true},
                                         {"LogDirectory", "/\u2066x"},
                                         {"SIPDomain", "\u007F\u202E"},
                                         {"ExecutablePath", "/tmp/\u202Eevil\u009B"}}}},
      agent.configurationPath()));
  for (const Words& words :
       {Words{"status"}, Words{"config", "show"}, Words{"report"}, Words{"explain", link("7")}}) {
    expectHarmless(words);
  }
  EXPECT_THAT(run({"config", "show"}).out, HasSubstr("\\xe2\\x80\\xaeevil\\xc2\\x9b"));
}

TEST_F(ToolTrace, LinksAndArgumentsReachTheTerminalHarmless) {
  const std::string text = expectHarmless({"explain", std::string("vendril:") + kHostile});
  EXPECT_THAT(text, HasSubstr(std::string("vendril:") + kHarmless));
  expectHarmless({"explain", "vendril:portalURI=http://p/%1B%5B2J%C2%9B?session_id=%0D%E2%80%AE"});
  expectHarmless({"explain", "vendril:\xFF\xFE"});
  for (const Words& words :
       {Words{kHostile}, Words{"status", kHostile}, Words{"config", "save", kHostile}}) {
    const ProgramRun refused = run(words);
    EXPECT_EQ(refused.status, 2);
    expectPrintable(refused.err);
    EXPECT_THAT(refused.err, HasSubstr(kHarmless));
  }
  const ProgramRun foreign = run({"unregister", kHostile});
  expectPrintable(foreign.out);
  expectPrintable(foreign.err);
}

TEST_F(ToolTrace, NamesOfTheDesktopReachTheTerminalHarmless) {
  files.autostart(std::string("x") + kHostile + ".desktop",
                  desktopEntryText(std::string("Brelto Orvanta ") + kHostile, "/nonexistent/x"));
  files.application("evil\u202E\u009B", "MimeType=x-scheme-handler/vendril;\n");
  files.mimeApps("[Default Applications]\nx-scheme-handler/vendril=evil\u202E\u009B.desktop\n");
  const std::string text = expectHarmless({"status"});
  EXPECT_THAT(text, HasSubstr("Brelto Orvanta "));
  EXPECT_THAT(text, HasSubstr("evil\\xe2\\x80\\xae\\xc2\\x9b opens vendril links"));
  expectHarmless({"login-item", "status"});
}

TEST_F(ToolTrace, CommandThatMendsAHostilePathIsPrintableAndExact) {
  const std::string path = agent.home().root() / "it's \u202E\u009B";
  writeFile(path, "");
  ASSERT_TRUE(PlistFiles().writeDictionary(
      {{"PublishedConfiguration", Object{{"ExecutablePath", path}}}}, agent.configurationPath()));
  expectFinding("client", "not-executable", "warning");
  expectPrintable(run({"status"}).out);
  mend("client");
  expectFinding("client", "found", "ok");
}

}  // namespace
}  // namespace vendril
