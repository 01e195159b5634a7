#include "platform/MessageFormat.h"

#include <gtest/gtest.h>

#include "platform/LoggerBlock.h"

namespace vendril {
namespace {

TEST(MessageFormat, FillsPlaceholdersInOrder) {
  EXPECT_EQ(
      formatMessage("[%@] Request %@ failed with HTTP status code: %ld%s", "Class", "ID", 404, ""),
      "[Class] Request ID failed with HTTP status code: 404");
}

TEST(MessageFormat, KeepsTheLettersBehindAnUnsignedStatus) {
  EXPECT_EQ(formatMessage("Status=%ull", static_cast<std::uint32_t>(-1)), "Status=4294967295ll");
}

TEST(MessageFormat, AbsentObjectPrintsAsNull) {
  EXPECT_EQ(formatMessage("'%@'", std::optional<std::string>()), "'(null)'");
}

TEST(MessageFormat, NeverReadsAnArgumentAsAFormat) {
  EXPECT_EQ(formatMessage("%@ %@", "%@%s%n{}", "b"), "%@%s%n{} b");
}

TEST(LoggerBlock, AbsentBlockIsNotCalled) {
  logTo(LoggerBlock(), "%d", 1);
}

}  // namespace
}  // namespace vendril
