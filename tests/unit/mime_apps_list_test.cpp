#include "platform/freedesktop/MimeAppsList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kGroup = MimeAppsList::kDefaultApplications;
constexpr const char* kType = "x-scheme-handler/vendril";

std::string withFirst(const std::string& text) {
  return withApplicationFirst(text, kGroup, kType, "v.desktop");
}
std::string without(const std::string& text) {
  return withoutApplication(text, kGroup, kType, "v.desktop");
}

TEST(MimeAppsList, GivesTheApplicationsOfATypeInTheirOrder) {
  const auto list = MimeAppsList::parse("[Default Applications]\na/b=x.desktop;y.desktop\n");
  ASSERT_TRUE(list);
  EXPECT_THAT(list->applications(kGroup, "a/b"), ElementsAre("x.desktop", "y.desktop"));
  EXPECT_THAT(list->applications(kGroup, "a/c"), IsEmpty());
  EXPECT_TRUE(list->names(kGroup, "a/b"));
  EXPECT_FALSE(list->names(MimeAppsList::kAddedAssociations, "a/b"));
}

TEST(MimeAppsList, OneBadLineMakesTheWholeListMalformed) {
  EXPECT_FALSE(MimeAppsList::parse("[Default Applications]\na/b=x.desktop\nrubbish\n"));
  EXPECT_FALSE(MimeAppsList::parse("a/b=x.desktop\n"));
  EXPECT_FALSE(MimeAppsList::parse("<<<<<<< HEAD\n"));
  EXPECT_TRUE(MimeAppsList::parse(""));
}

TEST(MimeAppsList, ReadingAboutOneTypeGivesWhatReadingTheWholeListGives) {
  const TemporaryDirectory directory;
  const std::string entry = std::string(kType) + "=v.desktop;\n";
  const std::string group = "[Default Applications]\n";
  for (const std::string& text :
       {group + "a/b=x.desktop;\n" + entry, group + entry + "a/b+c.d_e-f=\n",
        "# note\n\n" + group + "c[de]=x\n d/e = x\n" + entry, "[Other]\n" + entry + group,
        group + entry + "rubbish\n", "a/b=x.desktop;\n" + group + entry,
        group + "[broken\n" + entry, "[Main]\nEncoding=KOI8-R\n" + group + entry,
        group + "=x\n" + entry, group + entry + "Encoding=\xFF\n", group + entry + "a/b=x"}) {
    const std::string path = directory.write("mimeapps.list", text);
    const auto whole = MimeAppsList::read(path);
    const auto about = MimeAppsList::readAbout({kType}, path);
    ASSERT_EQ(about.has_value(), whole.has_value()) << text;
    if (whole) {
      EXPECT_EQ(about->applications(kGroup, kType), whole->applications(kGroup, kType)) << text;
    }
  }
}

TEST(MimeAppsList, ListThatDoesNotMentionATypeSaysNothingAboutItWhetherItParsesOrNot) {
  const TemporaryDirectory directory;
  for (const std::string& text :
       {std::string(), std::string("[Default Applications]\na/b=x.desktop\n"),
        std::string("rubbish\n")}) {
    const std::string path = directory.write("mimeapps.list", text);
    const auto about = MimeAppsList::readAbout({kType}, path);
    ASSERT_TRUE(about) << text;
    EXPECT_THAT(about->applications(kGroup, kType), IsEmpty()) << text;
    EXPECT_FALSE(about->names(kGroup, kType)) << text;
  }
  EXPECT_TRUE(MimeAppsList::readAbout({kType}, directory / "missing"));
  EXPECT_FALSE(MimeAppsList::readAbout({kType}, directory.path()));
}

TEST(MimeAppsEdit, EmptyListGetsTheGroupAndTheLine) {
  EXPECT_EQ(withFirst(""), "[Default Applications]\nx-scheme-handler/vendril=v.desktop;\n");
}

TEST(MimeAppsEdit, LastLineThatEndsInACarriageReturnKeepsItsValue) {
  const std::string text = withFirst("[Other]\na=b\r");
  const auto list = MimeAppsList::parse(text);
  ASSERT_TRUE(list) << text;
  EXPECT_THAT(list->applications("Other", "a"), ElementsAre("b\r")) << text;
}

TEST(MimeAppsEdit, NewGroupComesBehindABlankLine) {
  EXPECT_EQ(withFirst("[Other]\na=b\n"),
            "[Other]\na=b\n\n[Default Applications]\nx-scheme-handler/vendril=v.desktop;\n");
}

TEST(MimeAppsEdit, NewLineComesBehindTheLastOneOfItsGroup) {
  EXPECT_EQ(withFirst("[Default Applications]\na/b=x.desktop\n\n# next\n[Other]\na=b\n"),
            "[Default Applications]\na/b=x.desktop\nx-scheme-handler/vendril=v.desktop;\n\n# next\n"
            "[Other]\na=b\n");
}

TEST(MimeAppsEdit, LastLineWithoutALineEndGetsOne) {
  EXPECT_EQ(withFirst("[Default Applications]\na/b=x.desktop"),
            "[Default Applications]\na/b=x.desktop\nx-scheme-handler/vendril=v.desktop;\n");
}

TEST(MimeAppsEdit, LineEndsOfTheListAreKept) {
  EXPECT_EQ(withFirst("[Default Applications]\r\na/b=x.desktop\r\n"),
            "[Default Applications]\r\na/b=x.desktop\r\nx-scheme-handler/vendril=v.desktop;\r\n");
}

TEST(MimeAppsEdit, ApplicationMovesBeforeTheOthersWhichStayAsTheyAreWritten) {
  EXPECT_EQ(withFirst("[Default Applications]\n"
                      "  x-scheme-handler/vendril = a\\;b.desktop;v.desktop;c.desktop\n"),
            "[Default Applications]\n"
            "  x-scheme-handler/vendril = v.desktop;a\\;b.desktop;c.desktop;\n");
}

TEST(MimeAppsEdit, ElementsThatWouldHideTheApplicationFromEverybodyGo) {
  for (const std::string unreadable : {"\xE9.desktop", "a\\x.desktop", "a\\"}) {
    const std::string key = "[Default Applications]\nx-scheme-handler/vendril=";
    for (const std::string others : {"b.desktop;", "v.desktop;b.desktop;"}) {
      const std::string edited = withFirst(key + others + unreadable + "\n");
      EXPECT_EQ(edited, key + "v.desktop;b.desktop;\n");
      EXPECT_THAT(MimeAppsList::parse(edited)->applications(kGroup, kType),
                  ElementsAre("v.desktop", "b.desktop"));
    }
  }
}

TEST(MimeAppsEdit, CarriageReturnInFrontOfAKeyStays) {
  EXPECT_EQ(withFirst("[Default Applications]\n \rx-scheme-handler/vendril = b.desktop\n"),
            "[Default Applications]\n \rx-scheme-handler/vendril = v.desktop;b.desktop;\n");
}

TEST(MimeAppsEdit, BlankBehindAnApplicationMakesItAnother) {
  EXPECT_EQ(withFirst("[Default Applications]\nx-scheme-handler/vendril=v.desktop \n"),
            "[Default Applications]\nx-scheme-handler/vendril=v.desktop;v.desktop ;\n");
}

TEST(MimeAppsEdit, ValueEndsAtANulAsItDoesForItsReaders) {
  const std::string text("[Default Applications]\nx-scheme-handler/vendril=b.desktop\0\xE9;c\n",
                         60);
  EXPECT_EQ(withFirst(text),
            "[Default Applications]\nx-scheme-handler/vendril=v.desktop;b.desktop;\n");
}

TEST(MimeAppsEdit, ListThatHasTheApplicationFirstStaysTheSame) {
  for (const std::string value : {"v.desktop", " v.desktop;  ", "v.desktop;a.desktop"}) {
    const std::string text = "[Default Applications]\nx-scheme-handler/vendril=" + value;
    EXPECT_EQ(withFirst(text), text);
  }
}

TEST(MimeAppsEdit, OnlyTheLineThatCountsChangesWhenAKeyComesTwice) {
  const std::string text =
      "[Default Applications]\nx-scheme-handler/vendril=a.desktop\n[Other]\n"
      "x-scheme-handler/vendril=o.desktop\n[Default Applications]\n"
      "x-scheme-handler/vendril=b.desktop\n";
  const std::string edited = withFirst(text);
  EXPECT_EQ(edited,
            "[Default Applications]\nx-scheme-handler/vendril=a.desktop\n[Other]\n"
            "x-scheme-handler/vendril=o.desktop\n[Default Applications]\n"
            "x-scheme-handler/vendril=v.desktop;b.desktop;\n");
  EXPECT_THAT(MimeAppsList::parse(edited)->applications(kGroup, kType),
              ElementsAre("v.desktop", "b.desktop"));
}

TEST(MimeAppsEdit, GroupIsFoundBehindWhoseNameAStrayByteStands) {
  EXPECT_EQ(withFirst("[Default Applications]\x98\nx-scheme-handler/vendril=b.desktop\n"),
            "[Default Applications]\x98\nx-scheme-handler/vendril=v.desktop;b.desktop;\n");
}

TEST(MimeAppsEdit, CommentedOutAndTranslatedKeysAreOtherKeys) {
  const std::string text =
      "[Default Applications]\n#x-scheme-handler/vendril=a.desktop\n"
      "x-scheme-handler/vendril[de]=b.desktop\n";
  EXPECT_EQ(withFirst(text), text + "x-scheme-handler/vendril=v.desktop;\n");
}

TEST(MimeAppsEdit, RemovingTakesOnlyTheApplicationOut) {
  EXPECT_EQ(without("[Default Applications]\nx-scheme-handler/vendril=a.desktop;v.desktop;\n"),
            "[Default Applications]\nx-scheme-handler/vendril=a.desktop;\n");
  const std::string other = "[Default Applications]\nx-scheme-handler/vendril = a.desktop\n";
  EXPECT_EQ(without(other), other);
  EXPECT_EQ(without(""), "");
}

TEST(MimeAppsEdit, RemovingTheLastApplicationTakesTheLineOut) {
  EXPECT_EQ(without("[Default Applications]\nx-scheme-handler/vendril=b.desktop\n"
                    "x-scheme-handler/vendril=v.desktop\na=b\n"),
            "[Default Applications]\na=b\n");
}

}  // namespace
}  // namespace vendril
