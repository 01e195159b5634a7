#include "platform/MessageFormat.h"

#include <gmock/gmock.h>

#include <vector>

#include "platform/LoggerBlock.h"

namespace vendril {
namespace {

using testing::ElementsAre;

TEST(MessageFormat, FillsPlaceholdersInOrder) {
  EXPECT_EQ(
      formatMessage("[%@] Request %@ failed with HTTP status code: %ld%s", "Class", "ID", 404, ""),
      "[Class] Request ID failed with HTTP status code: 404");
}

TEST(MessageFormat, KeepsTheLettersBehindAnUnsignedStatus) {
  EXPECT_EQ(formatMessage("Status=%ull", static_cast<std::uint32_t>(-1)), "Status=4294967295ll");
}

TEST(MessageFormat, PrintsEveryKindOfInteger) {
  EXPECT_EQ(formatMessage("%d %ld %hhd %lu %u", -1, std::int64_t{-9'000'000'000}, true,
                          ~std::uint64_t{0}, 7U),
            "-1 -9000000000 1 18446744073709551615 7");
}

TEST(MessageFormat, PrintsEveryKindOfText) {
  EXPECT_EQ(formatMessage("%@ %@ %s", std::string("a"), std::string_view("b"), "c"), "a b c");
}

TEST(MessageFormat, PrintsObjectsAsTheirDescription) {
  EXPECT_EQ(formatMessage("%@ %@ %@ %@", Url::parse("x:y"), Date(std::chrono::seconds(1)),
                          PropertyList("a b"), PropertyList::Dictionary{{"k", 1}}),
            "x:y 1970-01-01 00:00:01 +0000 \"a b\" {\n    k = 1;\n}");
}

TEST(MessageFormat, AbsentObjectPrintsAsNull) {
  EXPECT_EQ(formatMessage("'%@'", std::optional<std::string>()), "'(null)'");
  EXPECT_EQ(formatMessage("%@", std::optional<Url>()), "(null)");
}

TEST(MessageFormat, NeverReadsAnArgumentAsAFormat) {
  EXPECT_EQ(formatMessage("%@ %@", "%@%s%n{}", "b"), "%@%s%n{} b");
}

TEST(MessageFormat, ADoubledPercentSignIsOne) {
  EXPECT_EQ(formatMessage("100%% of %@ %%@", "x"), "100% of x %@");
}

TEST(MessageFormat, BracesStandForThemselves) {
  EXPECT_EQ(formatMessage("{} {0} %@", "x"), "{} {0} x");
}

TEST(MessageFormat, KeepsANulInAText) {
  EXPECT_EQ(formatMessage("<%@>", std::string("a\0b", 3)), std::string("<a\0b>", 5));
}

TEST(RenderMessage, APlaceholderWithoutAnArgumentIsCopied) {
  const std::vector<MessageArgument> arguments{"a"};
  EXPECT_EQ(renderMessage("%@ %@ %d", arguments), "a %@ %d");
}

TEST(RenderMessage, AnUnknownPlaceholderIsCopiedAndTakesNoArgument) {
  const std::vector<MessageArgument> arguments{"a", "b"};
  EXPECT_EQ(renderMessage("%x %@ 5% %", arguments), "%x a 5% %");
}

TEST(LoggerBlock, AbsentBlockIsNotCalled) {
  logTo(LoggerBlock(), "%d", 1);
}

TEST(LoggerBlock, ReceivesTheFormattedMessage) {
  std::vector<std::string> messages;
  const LoggerBlock block = [&messages](std::string_view message) {
    messages.emplace_back(message);
  };
  logTo(block, "%@ %d", "a", 1);
  logTo(block, "no arguments");
  EXPECT_THAT(messages, ElementsAre("a 1", "no arguments"));
}

}  // namespace
}  // namespace vendril
