#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/JsonText.h"
#include "support/ScopedTimeZone.h"
#include "tools/Answer.h"
#include "tools/LogLines.h"
#include "tools/Status.h"
#include "tools/Text.h"

namespace vendril::tools {
namespace {

using ::testing::HasSubstr;

TEST(ToolText, PrintableTextIsOneLineWithoutControls) {
  EXPECT_EQ(printable("a\tb\nc\x1B[1m\x7F"), "a\\x09b\\x0ac\\x1b[1m\\x7f");
  EXPECT_EQ(printable("\u009B\u2028\u202E\u200Fä\xFF"),
            "\\xc2\\x9b\\xe2\\x80\\xa8\\xe2\\x80\\xae\\xe2\\x80\\x8fä\\xff");
  EXPECT_EQ(printable("\n"), "\\x0a");
  EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(printable(""), "");
}

TEST(ToolText, PrintableLinesKeepTheirBreaksWithATabBehindEach) {
  EXPECT_EQ(printableLines("a\nb\u202E\r"), "a\n\tb\\xe2\\x80\\xae\\x0d");
}

TEST(ToolText, ShellWordIsBareQuotedOrEscapedAsItHasToBe) {
  EXPECT_EQ(shellWord("/usr/bin/vendril"), "/usr/bin/vendril");
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord("it's $HOME"), R"('it'\''s $HOME')");
  EXPECT_EQ(shellWord("~root"), "'~root'");
  EXPECT_EQ(shellWord("a\n'\\\u202E"), R"($'a\x0a\'\\\xe2\x80\xae')");
}

TEST(ToolText, EscapeInAShellWordEndsBeforeAHexadecimalDigitThatFollows) {
  // The shell reads two digits at most.
  EXPECT_EQ(shellWord("\x01"
                      "f"),
            "$'\\x01f'");
}

TEST(ToolText, AnswerIsAsciiJsonWhateverItHolds) {
  const JsonMembers members{{"control", "\x1B\x7F\u009B\u202E"},
                            {"bytes", "\xFF"},
                            {"date", Date()},
                            {"data", PropertyList::Data{std::byte{1}}},
                            {"number", std::numeric_limits<double>::infinity()},
                            {"inner", PropertyList::Dictionary{{"ä", PropertyList::Array{true}}}}};
  const std::string text = jsonText(members);
  EXPECT_EQ(
      text.find_first_not_of("\n !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                             "abcdefghijklmnopqrstuvwxyz{|}~"),
      std::string::npos)
      << text;
  const PropertyList::Dictionary object = parseJsonObject(text);
  EXPECT_EQ(textAt(object, "control"), "\x1B\x7F\u009B\u202E");
  EXPECT_EQ(textAt(object, "bytes"), "\\xff");
  EXPECT_EQ(textAt(object, "date"), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(textAt(object, "number"), "inf");
}

TEST(ToolText, MembersOfAnAnswerKeepTheirOrder) {
  EXPECT_EQ(jsonText({{"b", 1}, {"a", 2}}), "{\n  \"b\": 1,\n  \"a\": 2\n}\n");
}

// The findings as text.

Check finding(Level level, const char* name) {
  return {name, "some-verdict", level, "what\x1B is", std::nullopt, {}};
}

TEST(ToolText, StatusInAPipeIsOneLineForEachFinding) {
  std::vector<Check> checks{finding(Level::ok, "one"), finding(Level::error, "longer")};
  checks[1].remedy = "mend it";
  EXPECT_EQ(statusText("Vendril", checks, {}),
            "Vendril: broken\n"
            "ok one some-verdict: what\\x1b is\n"
            "error longer some-verdict: what\\x1b is\n"
            "  mend: mend it\n");
}

TEST(ToolText, StatusOnATerminalIsATableWithOrWithoutColours) {
  std::vector<Check> checks{finding(Level::note, "longer"), finding(Level::warning, "one")};
  checks[1].remedy = "mend it";
  EXPECT_EQ(statusText("Vendril", checks, {true, false}),
            "Vendril: degraded\n"
            "  note     longer  what\\x1b is\n"
            "  warning  one     what\\x1b is\n"
            "                   mend: mend it\n");
  EXPECT_THAT(statusText("Vendril", checks, {true, true}),
              HasSubstr("  \x1B[33mwarning\x1B[0m  one     what\\x1b is\n"));
}

TEST(ToolText, WorstFindingDecidesTheWhole) {
  EXPECT_EQ(overallVerdict({}), "healthy");
  EXPECT_EQ(overallVerdict({finding(Level::ok, "a"), finding(Level::note, "b")}), "healthy");
  EXPECT_EQ(overallVerdict({finding(Level::warning, "a"), finding(Level::note, "b")}), "degraded");
  EXPECT_EQ(overallVerdict({finding(Level::error, "a"), finding(Level::warning, "b")}), "broken");
}

// The lines of logs.

TEST(ToolText, RecordOfTheJournalIsReadWithTextOrBytes) {
  const auto bytes = fromJournal(R"({"MESSAGE":[118,101,255],"_PID":"7"})");
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->message, "ve\xFF");
  EXPECT_EQ(bytes->time, "");
  EXPECT_EQ(lineText(*bytes), " vendril[7] ve\\xff\n");
  EXPECT_FALSE(fromJournal("-- No entries --"));
  EXPECT_FALSE(fromJournal("[1]"));
  EXPECT_FALSE(fromJournal(""));
}

TEST(ToolText, TimeOfARecordOfTheJournalIsThatOfTheLog) {
  const ScopedTimeZone zone("UTC0");
  const auto record =
      fromJournal(R"({"MESSAGE":"a","_PID":"7","__REALTIME_TIMESTAMP":"1767323045678901"})");
  ASSERT_TRUE(record);
  EXPECT_EQ(lineText(*record), "2026-01-02 03:04:05.678 vendril[7] a\n");
}

TEST(ToolText, LineOfTheLogFileWithoutATimeGoesOnWithTheRecordBefore) {
  EXPECT_EQ(lineText(fromLogFile("[2026-01-02 03:04:05.678] a [b] c")),
            "2026-01-02 03:04:05.678 a [b] c\n");
  EXPECT_EQ(lineText(fromLogFile("    key = value;")), "\t    key = value;\n");
  EXPECT_EQ(lineText(fromLogFile("[x] y")), "\t[x] y\n");
}

TEST(ToolText, StandardErrorIsReadForTheAgentsLinesAlone) {
  const auto line = fromStandardError("2026-01-02 03:04:05.678 vendril[7] a message");
  ASSERT_TRUE(line);
  EXPECT_EQ(line->process, "7");
  EXPECT_EQ(line->message, "a message");
  EXPECT_FALSE(fromStandardError("2026-01-02 03:04:05.678 other[7] a message"));
  EXPECT_FALSE(fromStandardError("vendril[7] a message"));
  EXPECT_FALSE(fromStandardError("2026-01-02 03:04:05.678 vendril[] a message"));
  EXPECT_FALSE(fromStandardError("2026-01-02 03:04:05.678"));
  EXPECT_EQ(fromStandardError("\tlater line")->message, "later line");
}

TEST(ToolText, LineMayBeAsLongAsTheAnswersThatAreLogged) {
  const std::string body(1024 * 1024, 'x');
  const LogLine inFile = fromLogFile("[2026-01-02 03:04:05.678] " + body);
  EXPECT_EQ(inFile.time, "2026-01-02 03:04:05.678");
  EXPECT_TRUE(inFile.message == body) << inFile.message.size() << " bytes";
  const auto line = fromStandardError("2026-01-02 03:04:05.678 vendril[7] " + body);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->process, "7");
  EXPECT_TRUE(line->message == body) << line->message.size() << " bytes";
}

}  // namespace
}  // namespace vendril::tools
