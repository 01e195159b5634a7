#include "platform/PropertyList.h"

#include <gmock/gmock.h>

#include <limits>

namespace vendril {
namespace {

using testing::IsNull;
using testing::NotNull;

TEST(PropertyListDescription, ADictionaryHasALineForEachKeyInAscendingOrder) {
  EXPECT_EQ(description(PropertyList::Dictionary{{"b", "two"}, {"a", 1}, {"B", true}}),
            "{\n"
            "    B = 1;\n"
            "    a = 1;\n"
            "    b = two;\n"
            "}");
}

TEST(PropertyListDescription, AnEmptyDictionaryIsTwoBraces) {
  EXPECT_EQ(description(PropertyList::Dictionary{}), "{\n}");
}

TEST(PropertyListDescription, InnerValuesAreIndentedFurther) {
  const PropertyList::Dictionary dictionary{
      {"array", PropertyList::Array{"a", PropertyList::Dictionary{{"k", "v"}}}},
      {"empty", PropertyList::Array{}},
      {"inner", PropertyList::Dictionary{{"k", 2}}}};
  EXPECT_EQ(description(dictionary),
            "{\n"
            "    array = (\n"
            "        a,\n"
            "        {\n"
            "            k = v;\n"
            "        }\n"
            "    );\n"
            "    empty = (\n"
            "    );\n"
            "    inner = {\n"
            "        k = 2;\n"
            "    };\n"
            "}");
}

TEST(PropertyListDescription, ATextOfBareCharactersIsBare) {
  for (const char* text : {"a", "Z", "0", "_$/:.", "/opt/client", "3.21.0.64.24", "sip:host"}) {
    EXPECT_EQ(description(PropertyList(text)), text);
  }
}

TEST(PropertyListDescription, AnyOtherTextIsQuotedAndEscaped) {
  EXPECT_EQ(description(PropertyList("")), R"("")");
  EXPECT_EQ(description(PropertyList("a b")), R"("a b")");
  EXPECT_EQ(description(PropertyList("a-b")), R"("a-b")");
  EXPECT_EQ(description(PropertyList("{}")), R"("{}")");
  EXPECT_EQ(description(PropertyList(R"(say "\")")), R"("say \"\\\"")");
  EXPECT_EQ(description(PropertyList("caf\xC3\xA9")), "\"caf\xC3\xA9\"");
}

TEST(PropertyListDescription, AKeyIsQuotedLikeAText) {
  EXPECT_EQ(description(PropertyList::Dictionary{{"a key", "a value"}}),
            "{\n    \"a key\" = \"a value\";\n}");
}

TEST(PropertyListDescription, NumbersAreDecimalAndBooleansOneAndZero) {
  EXPECT_EQ(description(PropertyList(true)), "1");
  EXPECT_EQ(description(PropertyList(false)), "0");
  EXPECT_EQ(description(PropertyList(std::numeric_limits<std::int64_t>::min())),
            "-9223372036854775808");
  EXPECT_EQ(description(PropertyList(std::numeric_limits<std::uint64_t>::max())),
            "18446744073709551615");
  EXPECT_EQ(description(PropertyList(3.21)), "3.21");
}

TEST(PropertyListDescription, ADateIsItsTextQuoted) {
  EXPECT_EQ(description(PropertyList(Date(std::chrono::seconds(1)))),
            "\"1970-01-01 00:00:01 +0000\"");
}

TEST(PropertyListDescription, DataIsHexadecimal) {
  EXPECT_EQ(description(PropertyList(PropertyList::Data{std::byte{0x0A}, std::byte{0xFF}})),
            "<0aff>");
  EXPECT_EQ(description(PropertyList(PropertyList::Data{})), "<>");
}

TEST(PropertyList, GivesItsValueInItsOwnKindOnly) {
  const PropertyList value = 5;
  ASSERT_THAT(value.get<std::int64_t>(), NotNull());
  EXPECT_EQ(*value.get<std::int64_t>(), 5);
  EXPECT_THAT(value.get<std::string>(), IsNull());
  EXPECT_THAT(value.get<bool>(), IsNull());
}

TEST(PropertyList, ALiteralIsATextAndNotABoolean) {
  EXPECT_THAT(PropertyList("text").get<std::string>(), NotNull());
}

TEST(PropertyList, ValuesOfDifferentKindsAreNotEqual) {
  EXPECT_NE(PropertyList(true), PropertyList(1));
  EXPECT_NE(PropertyList(1), PropertyList(1.0));
  EXPECT_EQ(PropertyList("a"), PropertyList(std::string("a")));
}

TEST(PropertyList, CopiesAreDeep) {
  PropertyList::Dictionary original{{"k", PropertyList::Array{1}}};
  const PropertyList copy = original;
  original.insert_or_assign("k", 2);
  EXPECT_EQ(copy, PropertyList(PropertyList::Dictionary{{"k", PropertyList::Array{1}}}));
}

}  // namespace
}  // namespace vendril
