#include "platform/Date.h"

#include <gtest/gtest.h>

#include "support/ScopedTimeZone.h"

namespace vendril {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr const char* kLogPattern = "yyyy-MM-dd HH:mm:ss.SSS";
// 2024-01-31 13:05:09.042 UTC.
const Date kAfternoon{milliseconds(1'706'706'309'042)};

TEST(DateDescription, IsInUtcWhateverTheTimeZone) {
  const ScopedTimeZone zone("EAST-05:30");
  EXPECT_EQ(description(kAfternoon), "2024-01-31 13:05:09 +0000");
}

TEST(DateDescription, RoundsTowardsThePast) {
  EXPECT_EQ(description(Date(milliseconds(999))), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(description(Date(milliseconds(-1))), "1969-12-31 23:59:59 +0000");
}

TEST(DateDescription, ReachesTheEndsOfTheClocksRange) {
  EXPECT_EQ(description(Date::min()), "1677-09-21 00:12:43 +0000");
  EXPECT_EQ(description(Date::max()), "2262-04-11 23:47:16 +0000");
}

TEST(DateFormatter, FillsEveryFieldInLocalTime) {
  const ScopedTimeZone zone("UTC0");
  EXPECT_EQ(DateFormatter(kLogPattern).stringFromDate(kAfternoon), "2024-01-31 13:05:09.042");
}

TEST(DateFormatter, FollowsTheTimeZone) {
  const ScopedTimeZone zone("EAST-11:30");
  EXPECT_EQ(DateFormatter(kLogPattern).stringFromDate(kAfternoon), "2024-02-01 00:35:09.042");
}

TEST(DateFormatter, FollowsDaylightSavingTime) {
  const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const DateFormatter formatter("HH:mm");
  EXPECT_EQ(formatter.stringFromDate(Date(seconds(1'711'846'799))), "01:59");
  EXPECT_EQ(formatter.stringFromDate(Date(seconds(1'711'846'800))), "03:00");
}

TEST(DateFormatter, PadsWithZeros) {
  const ScopedTimeZone zone("UTC0");
  EXPECT_EQ(DateFormatter(kLogPattern).stringFromDate(Date(milliseconds(7))),
            "1970-01-01 00:00:00.007");
}

TEST(DateFormatter, MillisecondsBeforeTheEpochCountForwards) {
  const ScopedTimeZone zone("UTC0");
  EXPECT_EQ(DateFormatter(kLogPattern).stringFromDate(Date(milliseconds(-1))),
            "1969-12-31 23:59:59.999");
}

TEST(DateFormatter, OtherCharactersStandForThemselves) {
  const ScopedTimeZone zone("UTC0");
  EXPECT_EQ(DateFormatter("[dd/MM] m {} %s").stringFromDate(kAfternoon), "[31/01] m {} %s");
  EXPECT_EQ(DateFormatter("").stringFromDate(kAfternoon), "");
}

}  // namespace
}  // namespace vendril
