#include "portal/FormBody.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vendril::portal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(FormBody, KeepsTheFieldsInTheOrderInWhichTheyWereSent) {
  EXPECT_THAT(decodeFormBody("b=2&a=1&b=3"),
              ElementsAre(Pair("b", "2"), Pair("a", "1"), Pair("b", "3")));
}

TEST(FormBody, DecodesNamesAndValues) {
  EXPECT_THAT(decodeFormBody("a%20b=%7B%22x%22%3a1%7D&c=d+e%2B"),
              ElementsAre(Pair("a b", "{\"x\":1}"), Pair("c", "d e+")));
}

TEST(FormBody, LeavesAMalformedEscapeAsItStands) {
  EXPECT_THAT(decodeFormBody("a=%zz&b=%4&c=%&d=%4z"),
              ElementsAre(Pair("a", "%zz"), Pair("b", "%4"), Pair("c", "%"), Pair("d", "%4z")));
}

TEST(FormBody, TakesNoHexadecimalDigitsForAnEscapeWithoutThePercentSign) {
  EXPECT_THAT(decodeFormBody("add=bee"), ElementsAre(Pair("add", "bee")));
}

TEST(FormBody, SplitsAFieldAtItsFirstEqualsSign) {
  EXPECT_THAT(decodeFormBody("a=b=c&d&=e"),
              ElementsAre(Pair("a", "b=c"), Pair("d", ""), Pair("", "e")));
}

TEST(FormBody, IgnoresEmptyPieces) {
  EXPECT_THAT(decodeFormBody(""), IsEmpty());
  EXPECT_THAT(decodeFormBody("&&a=1&"), ElementsAre(Pair("a", "1")));
}

}  // namespace
}  // namespace vendril::portal
