#include "platform/freedesktop/LogRecord.h"

#include <gtest/gtest.h>

namespace vendril {
namespace {

std::string logText(std::string_view message) {
  std::string out;
  appendLogText(out, message);
  return out;
}

using std::chrono::milliseconds;
using std::chrono::seconds;

std::string recordTime(Date time) {
  std::string out = "at ";
  appendRecordTime(out, time);
  return out;
}

TEST(RecordTime, IsThatOfTheFormatterWhateverCameBefore) {
  const DateFormatter formatter("yyyy-MM-dd HH:mm:ss.SSS");
  const Date start(seconds(1'784'540'799));
  for (const Date time : {start, start + milliseconds(7), start + milliseconds(999),
                          start + milliseconds(1000), start + milliseconds(3), start - seconds(40),
                          Date(), Date(milliseconds(-1)), Date::min(), Date::max()}) {
    EXPECT_EQ(recordTime(time), "at " + formatter.stringFromDate(time));
  }
}

TEST(LogText, PlainTextStaysAsItIs) {
  EXPECT_EQ(logText("[Class] caf\u00E9 \u20AC 100% \\x41 \U0001F600"),
            "[Class] caf\u00E9 \u20AC 100% \\x41 \U0001F600");
  EXPECT_EQ(logText(""), "");
}

TEST(LogText, LineBreakIsFollowedByATab) {
  EXPECT_EQ(logText("{\n    key = value;\n}"), "{\n\t    key = value;\n\t}");
  EXPECT_EQ(logText("\n\n"), "\n\t\n\t");
}

TEST(LogText, ControlCharactersPrintAsTheirBytes) {
  EXPECT_EQ(logText("a\rb\tc\x1B[1m\x7F\v\f"), "a\\x0db\\x09c\\x1b[1m\\x7f\\x0b\\x0c");
  EXPECT_EQ(logText("\u0085\u009B\u00A0"), "\\xc2\\x85\\xc2\\x9b\u00A0");
}

TEST(LogText, NulPrintsToo) {
  EXPECT_EQ(logText(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(LogText, UnicodeLineSeparatorsPrintAsTheirBytes) {
  EXPECT_EQ(logText("a\u2028b\u2029c\u2027"), "a\\xe2\\x80\\xa8b\\xe2\\x80\\xa9c\u2027");
}

TEST(LogText, BytesThatAreNotUtf8PrintAsTheyAre) {
  EXPECT_EQ(logText("a\xFF\xC3"), "a\\xff\\xc3");
  EXPECT_EQ(logText("\xC2\n"), "\\xc2\n\t");
  EXPECT_EQ(logText("\xC0\x8A"), "\\xc0\\x8a");
}

}  // namespace
}  // namespace vendril
