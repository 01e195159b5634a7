#include "platform/PercentEncoding.h"

#include <gmock/gmock.h>

namespace vendril {
namespace {

using testing::Eq;
using testing::Optional;

TEST(RemovePercentEncoding, ReplacesEscapesInEitherCase) {
  EXPECT_THAT(removePercentEncoding("a%20b%2fc%2Fd%C3%a9"), Optional(Eq("a b/c/d\xC3\xA9")));
  EXPECT_THAT(removePercentEncoding(""), Optional(Eq("")));
  EXPECT_THAT(removePercentEncoding("plain"), Optional(Eq("plain")));
}

TEST(RemovePercentEncoding, DecodesOnlyOnce) {
  EXPECT_THAT(removePercentEncoding("%2541"), Optional(Eq("%41")));
}

TEST(RemovePercentEncoding, APlusSignStaysAPlusSign) {
  EXPECT_THAT(removePercentEncoding("a+b%2B"), Optional(Eq("a+b+")));
}

TEST(RemovePercentEncoding, ANulIsACharacterLikeAnyOther) {
  EXPECT_THAT(removePercentEncoding("a%00b"), Optional(Eq(std::string("a\0b", 3))));
}

TEST(RemovePercentEncoding, AMalformedEscapeGivesNothing) {
  for (const char* text : {"%zz", "a%", "a%4", "%4g", "%g4", "%%41", "ok%20%-1", "% 1"}) {
    EXPECT_EQ(removePercentEncoding(text), std::nullopt) << text;
  }
}

TEST(RemovePercentEncoding, BytesThatAreNotUtf8GiveNothing) {
  for (const char* text : {"%ff", "%C3", "%C3(", "%ED%A0%80", "%C0%80", "%00%ff"}) {
    EXPECT_EQ(removePercentEncoding(text), std::nullopt) << text;
  }
}

TEST(AddPercentEncoding, EscapesEveryByteOutsideTheSetInUpperCase) {
  EXPECT_EQ(addPercentEncoding("a b\xC3\xA9%\x7F", CharacterSet("ab")), "a%20b%C3%A9%25%7F");
  EXPECT_EQ(addPercentEncoding(std::string("\0", 1), CharacterSet("ab")), "%00");
  EXPECT_EQ(addPercentEncoding("", CharacterSet()), "");
}

TEST(AddPercentEncoding, IsUndoneByRemovingIt) {
  std::string text;
  for (int character = 0; character < 128; ++character) {
    text += static_cast<char>(character);
  }
  text += "\xE2\x82\xAC";
  EXPECT_THAT(
      removePercentEncoding(addPercentEncoding(text, CharacterSet::urlPathAllowedCharacterSet())),
      Optional(Eq(text)));
}

TEST(CharacterSet, UrlPathAllowsLettersDigitsAndSomeMarks) {
  constexpr std::string_view kMembers =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:=@_~";
  const CharacterSet set = CharacterSet::urlPathAllowedCharacterSet();
  for (int byte = 0; byte < 256; ++byte) {
    const char character = static_cast<char>(byte);
    EXPECT_EQ(set.contains(character), kMembers.find(character) != std::string_view::npos)
        << "byte " << byte;
  }
}

TEST(CharacterSet, RemovingCharactersLeavesTheOthers) {
  CharacterSet set("abc");
  set.removeCharactersInString("bx");
  EXPECT_TRUE(set.contains('a'));
  EXPECT_FALSE(set.contains('b'));
  EXPECT_TRUE(set.contains('c'));
  EXPECT_FALSE(set.contains('x'));
}

}  // namespace
}  // namespace vendril
