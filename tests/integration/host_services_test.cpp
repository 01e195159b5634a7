#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>

#include "platform/freedesktop/GlibUuidGenerator.h"
#include "platform/freedesktop/UnixProcessInfo.h"

namespace vendril {
namespace {

TEST(GlibUuidGenerator, MakesDifferentIdentifiersInUpperCase) {
  GlibUuidGenerator generator;
  const auto one = generator.createUuidString();
  ASSERT_TRUE(one);
  EXPECT_THAT(*one, testing::MatchesRegex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"));
  EXPECT_NE(one, generator.createUuidString());
}

TEST(UnixProcessInfo, GivesTheArgumentsAsTheyCame) {
  const std::array<const char*, 3> arguments{"/path/program", "word", "--option"};
  const UnixProcessInfo info(static_cast<int>(arguments.size()), arguments.data());
  EXPECT_THAT(info.arguments(), testing::ElementsAreArray(arguments));
}

TEST(UnixProcessInfo, TellsTheWallClocksTime) {
  const UnixProcessInfo info(0, nullptr);
  const Date before = std::chrono::system_clock::now();
  const Date date = info.currentDate();
  EXPECT_LE(before, date);
  EXPECT_LE(date, std::chrono::system_clock::now());
}

}  // namespace
}  // namespace vendril
