#include "portal/ReportLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace vendril::portal {
namespace {

constexpr std::chrono::milliseconds kAtOnce{0};
constexpr std::chrono::seconds kLong{20};

Report reportWith(const std::string& body) {
  Report report;
  report.body = body;
  return report;
}

TEST(PortalReportLog, ReaderGetsEveryReportInTurn) {
  ReportLog log;
  log.add(reportWith("first"));
  log.add(reportWith("second"));
  const auto first = log.next(0, kAtOnce);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 1U);
  EXPECT_THAT(*first->json, testing::HasSubstr("\"first\""));
  EXPECT_EQ(log.next(1, kAtOnce)->number, 2U);
  EXPECT_FALSE(log.next(2, kAtOnce));
}

TEST(PortalReportLog, ReaderWaitsForTheNextReport) {
  ReportLog log;
  std::jthread writer([&log] { log.add(reportWith("later")); });
  const auto entry = log.next(0, kLong);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->number, 1U);
}

TEST(PortalReportLog, NumberOfAnotherPortalStartsFromTheBeginning) {
  ReportLog log;
  log.add(reportWith("only"));
  const auto entry = log.next(9, kAtOnce);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->number, 1U);
}

TEST(PortalReportLog, OnlyTheLatestReportsAreKept) {
  ReportLog log;
  for (std::size_t i = 0; i < ReportLog::kMostReports + 5; ++i) {
    log.add(reportWith("x"));
  }
  EXPECT_EQ(log.next(0, kAtOnce)->number, 6U);
}

TEST(PortalReportLog, LargeReportsAreKeptUpToABoundOfBytes) {
  ReportLog log;
  const std::string large(ReportLog::kMostBytes / 5, 'x');
  for (int i = 0; i < 4; ++i) {
    log.add(reportWith(large));
  }
  EXPECT_EQ(log.next(0, kAtOnce)->number, 3U)
      << "the body and its field take a fifth each, so that two reports fit";
}

TEST(PortalReportLog, LatestReportStaysHoweverLargeItIs) {
  ReportLog log;
  log.add(reportWith("small"));
  log.add(reportWith(std::string(2 * ReportLog::kMostBytes, 'x')));
  EXPECT_EQ(log.next(0, kAtOnce)->number, 2U);
}

TEST(PortalReportLog, ClosingEndsEveryWait) {
  ReportLog log;
  log.add(reportWith("unread"));
  std::jthread closer([&log] { log.close(); });
  EXPECT_FALSE(log.next(1, kLong));
  log.waitForClose(kLong);
  EXPECT_TRUE(log.isClosed());
  EXPECT_FALSE(log.next(0, kLong)) << "a closed log gives nothing out";
}

}  // namespace
}  // namespace vendril::portal
