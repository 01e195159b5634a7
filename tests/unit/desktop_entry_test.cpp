#include "platform/freedesktop/DesktopEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/freedesktop/AutostartEntry.h"

namespace vendril {
namespace {

using testing::Optional;

constexpr const char* kGroupLine = "[Desktop Entry]\n";
constexpr const char* kApplication = "Type=Application\nName=A\n";

std::string entryWith(const std::string& line) {
  return std::string(kGroupLine) + kApplication + line + "Exec=/bin/true\nX-Mine=1\n";
}

/// Lines in foreign languages for which GKeyFile rejects the whole entry.
class MalformedTranslation : public testing::TestWithParam<std::string> {};

TEST_P(MalformedTranslation, MakesNoEntry) {
  EXPECT_FALSE(DesktopEntry::parse(entryWith(GetParam())));
}

TEST_P(MalformedTranslation, LeavesAnEntryThatGetsNoOtherProgram) {
  EXPECT_EQ(withProgram(
                entryWith(GetParam()),
                {.name = "A", .icon = "a", .program = "/bin/false", .hideOnLaunch = std::nullopt}),
            std::nullopt);
}

TEST_P(MalformedTranslation, IsNotKeptInARemovedEntry) {
  EXPECT_EQ(asRemoved(entryWith(GetParam())),
            "[Desktop Entry]\nType=Application\nHidden=true\nX-LoginItem-Removed=true\n");
}

INSTANTIATE_TEST_SUITE_P(Lines, MalformedTranslation,
                         testing::Values("Comment [fr]=Salut\n", "Name[d e]=x\n", "Name[d/e]=x\n",
                                         "Name[a][fr]=x\n", "a]b[fr]=x\n", "  [fr]=x\n",
                                         std::string("Na\0me[fr]=x\n", 12)));

TEST(DesktopEntryText, WithATranslationInFrontOfItsGroupMakesNoEntry) {
  EXPECT_FALSE(DesktopEntry::parse("Name[fr]=x\n" + entryWith("")));
}

TEST(DesktopEntryText, WithForeignTranslationsIsAnEntry) {
  for (const std::string language : {"fr", "sr@latin", "zh_CN.UTF-8", "x-y"}) {
    const auto entry = DesktopEntry::parse(entryWith("Name[" + language + "]=x\n"));
    ASSERT_TRUE(entry) << language;
    EXPECT_THAT(entry->name(), Optional(std::string("A"))) << language;
    EXPECT_THAT(entry->string("X-Mine"), Optional(std::string("1"))) << language;
  }
}

TEST(DesktopEntryText, WithKeysOfNoInterestIsAnEntryAndOneThatIsMalformedIsNone) {
  for (const std::string line :
       {"Comment=x\n", "Categories=\xFF;\n", "Comment=\n", "Comment=a=b\n"}) {
    const auto entry = DesktopEntry::parse(entryWith(line));
    ASSERT_TRUE(entry) << line;
    EXPECT_TRUE(entry->isApplication()) << line;
    EXPECT_THAT(entry->string("Exec"), Optional(std::string("/bin/true"))) << line;
  }
  for (const std::string line : {"Comment\n", "=x\n", "Encoding=KOI8-R\n", "Com]ment=x\n"}) {
    EXPECT_FALSE(DesktopEntry::parse(entryWith(line))) << line;
  }
  EXPECT_FALSE(DesktopEntry::parse("Comment=x\n" + entryWith("")));
}

}  // namespace
}  // namespace vendril
