#include "platform/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace vendril {
namespace {

TEST(Utf8, AcceptsWellFormedText) {
  for (const char* text :
       {"", "a", "caf\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x93\x9E", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isValidUtf8(text)) << text;
  }
  EXPECT_TRUE(isValidUtf8({}));
}

TEST(Utf8, RefusesMalformedText) {
  for (const char* text : {
           "\xFF", "\x80",          // bytes that begin no character
           "\xC3", "a\xE2\x82",     // characters cut short
           "\xC3(", "\xE2\x28\xA1"  // characters that do not go on
       }) {
    EXPECT_FALSE(isValidUtf8(text)) << text;
  }
  EXPECT_FALSE(isValidUtf8("\xC0\xAF"));          // longer than it need be
  EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));      // a surrogate
  EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));  // beyond U+10FFFF
}

TEST(Utf8, ANulIsACharacterThatHidesNothing) {
  EXPECT_TRUE(isValidUtf8(std::string("\0", 1)));
  EXPECT_TRUE(isValidUtf8(std::string("a\0\0b\0", 5)));
  EXPECT_FALSE(isValidUtf8(std::string("a\0\xFF", 3)));
  EXPECT_FALSE(isValidUtf8(std::string("\xC3\0", 2)));
}

TEST(Utf8, CountsCharactersInsteadOfBytes) {
  EXPECT_EQ(characterCount(""), 0U);
  EXPECT_EQ(characterCount("abc"), 3U);
  EXPECT_EQ(characterCount("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\x9E"), 8U);
}

}  // namespace
}  // namespace vendril
