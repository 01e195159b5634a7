#include "platform/AsciiCase.h"

#include <gtest/gtest.h>

namespace vendril {
namespace {

TEST(AsciiCase, LowersAsciiLettersAlone) {
  EXPECT_EQ(asciiLowercase("@AZ[az09 \xC3\x84\xFF"), "@az[az09 \xC3\x84\xFF");
}

TEST(AsciiCase, KeepsNulBytesAndEmptyText) {
  EXPECT_EQ(asciiLowercase(std::string_view("A\0B", 3)), std::string("a\0b", 3));
  EXPECT_EQ(asciiLowercase(""), "");
}

}  // namespace
}  // namespace vendril
