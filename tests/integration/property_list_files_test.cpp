#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistGuard.h"
#include "support/PlistBytes.h"
#include "support/PlistTestDirectory.h"

namespace vendril::test {
namespace {

namespace fs = std::filesystem;
using std::chrono_literals::operator""s;
using Dictionary = PropertyList::Dictionary;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Date kReferenceDate{978307200s};

std::optional<PropertyList> parsedValue(const std::string& plist) {
  const std::optional<Dictionary> root = parseDictionary(plist);
  const auto entry = root ? root->find("k") : Dictionary::const_iterator();
  return root && entry != root->end() ? std::optional(entry->second) : std::nullopt;
}

std::optional<PropertyList> xmlValue(const std::string& value) {
  return parsedValue(xmlPlistWith(value));
}

std::optional<PropertyList> binaryValue(const std::string& object) {
  return parsedValue(binaryPlistWith({object}));
}

class PropertyListFilesOnDisk : public testing::Test {
 protected:
  std::optional<Dictionary> read() const { return files_.dictionaryWithContentsOfFile(path_); }
  bool write(const Dictionary& root) const { return files_.writeDictionary(root, path_); }

  PlistTestDirectory directory_;
  const std::string path_ = directory_.file("file.plist");
  const PlistFiles files_{};
};

TEST(PropertyListData, ReadsEveryKindOfValueFromXml) {
  EXPECT_EQ(xmlValue("<true/>"), PropertyList(true));
  EXPECT_EQ(xmlValue("<false></false>"), PropertyList(false));
  EXPECT_EQ(xmlValue("<integer>-42</integer>"), PropertyList(-42));
  EXPECT_EQ(xmlValue("<integer>-9223372036854775808</integer>"),
            PropertyList(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(xmlValue("<integer>18446744073709551615</integer>"),
            PropertyList(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(xmlValue("<real>-0.25</real>"), PropertyList(-0.25));
  EXPECT_EQ(xmlValue("<string> a&lt;&#228;<![CDATA[&]]></string>"), PropertyList(" a<\xC3\xA4&"));
  EXPECT_EQ(xmlValue("<string/>"), PropertyList(""));
  EXPECT_EQ(xmlValue("<date>2001-01-01T00:00:05Z</date>"), PropertyList(kReferenceDate + 5s));
  EXPECT_EQ(xmlValue("<date>1969-12-31T23:59:59Z</date>"), PropertyList(Date(-1s)));
  EXPECT_EQ(xmlValue("<data>AAE=</data>"),
            PropertyList(PropertyList::Data{std::byte{0}, std::byte{1}}));
  EXPECT_EQ(xmlValue("<data/>"), PropertyList(PropertyList::Data{}));
  EXPECT_EQ(xmlValue("<array><true/><array/></array>"),
            PropertyList(PropertyList::Array{true, PropertyList::Array{}}));
  EXPECT_EQ(xmlValue("<dict><key>&amp;</key><dict/></dict>"),
            PropertyList(Dictionary{{"&", Dictionary{}}}));
}

TEST(PropertyListData, ReadsEveryKindOfValueFromBinary) {
  EXPECT_EQ(binaryValue("\x09"), PropertyList(true));
  EXPECT_EQ(binaryValue("\x08"), PropertyList(false));
  EXPECT_EQ(binaryValue("\x10\xFF"), PropertyList(255));
  EXPECT_EQ(binaryValue('\x13' + std::string(8, '\xFF')), PropertyList(-1));
  EXPECT_EQ(binaryValue('\x14' + std::string(8, '\0') + std::string(8, '\xFF')),
            PropertyList(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(binaryValue('\x22' + bigEndianBytes(0x3FC00000, 4)), PropertyList(1.5));
  EXPECT_EQ(binaryValue(binaryText("abc")), PropertyList("abc"));
  EXPECT_EQ(binaryValue(binaryText("")), PropertyList(""));
  EXPECT_EQ(binaryValue(binaryUtf16(u"\u00E4\U0001F600")),
            PropertyList("\xC3\xA4\xF0\x9F\x98\x80"));
  EXPECT_EQ(binaryValue(binaryDate(5)), PropertyList(kReferenceDate + 5s));
  EXPECT_EQ(binaryValue(binaryData("\x01")), PropertyList(PropertyList::Data{std::byte{1}}));
  EXPECT_EQ(binaryValue(binaryData("")), PropertyList(PropertyList::Data{}));
  EXPECT_EQ(parsedValue(binaryPlistWith({binaryArray({3, 3}), "\x09"})),
            PropertyList(PropertyList::Array{true, true}));
  EXPECT_EQ(parsedValue(binaryPlistWith({binaryDictionary({1}, {3}), "\x09"})),
            PropertyList(Dictionary{{"k", true}}));
}

TEST(PropertyListData, TakesTheLastOfSeveralEntriesOfOneKey) {
  EXPECT_EQ(xmlValue("<true/><key>k</key><false/>"), PropertyList(false));
  EXPECT_EQ(parsedValue(binaryPlist({binaryDictionary({1, 2}, {3, 4}), binaryText("k"),
                                     binaryText("k"), "\x09", "\x08"})),
            PropertyList(false));
}

TEST(PropertyListData, BringsDatesThatTheClockCannotHoldIntoItsRange) {
  const auto dateOf = [](double seconds) {
    const auto value = binaryValue(binaryDate(seconds));
    const Date* date = value ? value->get<Date>() : nullptr;
    return date != nullptr ? description(*date) : "no date";
  };
  EXPECT_EQ(dateOf(4e9), "2127-10-04 07:06:40 +0000");
  EXPECT_EQ(dateOf(-4e9), "1874-03-31 16:53:20 +0000");
  EXPECT_EQ(dateOf(1e300), "2262-04-11 23:47:16 +0000");
  EXPECT_EQ(dateOf(-std::numeric_limits<double>::infinity()), "1677-09-21 00:12:44 +0000");
  EXPECT_EQ(dateOf(std::nan("")), "2001-01-01 00:00:00 +0000");
  EXPECT_EQ(xmlValue("<date>4001-01-01T00:00:00Z</date>"), binaryValue(binaryDate(1e300)));
}

TEST(PropertyListData, ReadsNothingButADictionary) {
  EXPECT_EQ(parseDictionary("<plist><array/></plist>"), std::nullopt);
  EXPECT_EQ(parseDictionary("<plist><string>a</string></plist>"), std::nullopt);
  EXPECT_EQ(parseDictionary(binaryPlist({binaryArray({})})), std::nullopt);
  EXPECT_EQ(parseDictionary("<plist><dict/></plist>"), Dictionary());
}

TEST(PropertyListData, ReadsADictionaryThatLooksLikeAnArchiversReference) {
  EXPECT_EQ(parseDictionary("<plist><dict><key>CF$UID</key><integer>3</integer></dict></plist>"),
            (Dictionary{{"CF$UID", 3}}));
}

TEST(PropertyListData, ReadsAndRefusesAtTheLimitsOfTheGuard) {
  EXPECT_TRUE(xmlValue(nestedXmlArrays(63)));
  EXPECT_FALSE(xmlValue(nestedXmlArrays(64)));
  EXPECT_TRUE(parsedValue(binaryPlistWith(nestedBinaryArrays(63))));
  EXPECT_FALSE(parsedValue(binaryPlistWith(nestedBinaryArrays(64))));
  EXPECT_TRUE(xmlValue("<array>" + repeated("<true/>", PlistLimits::kNodes - 3) + "</array>"));
  EXPECT_FALSE(xmlValue(nestedXmlArrays(60'000)));
}

TEST(PropertyListData, TakesSpansThatNoNulByteEnds) {
  const std::string plist = xmlPlistWith("<integer>7</integer>");
  const std::vector<unsigned char> bytes(plist.begin(), plist.end());
  EXPECT_EQ(PlistFiles().dictionaryWithData(bytes), (Dictionary{{"k", 7}}));
  EXPECT_EQ(PlistFiles().dictionaryWithData({}), std::nullopt);
}

/// One file with every kind of object in it.
std::string binaryOfEveryKind() {
  return binaryPlistWith({binaryArray({3, 4, 5, 6, 7, 8, 9, 10, 11}), binaryText("text"),
                          binaryUtf16(u"\u00E4\U0001F600"), binaryData("data"), binaryDate(1.5),
                          '\x13' + std::string(8, '\xFE'), '\x23' + std::string(8, '\x40'), "\x09",
                          binaryDictionary({1, 3}, {4, 11}), binaryArray({3, 3})});
}

TEST(PropertyListData, SurvivesABinaryFileThatEndsAnywhere) {
  const std::string good = binaryOfEveryKind();
  ASSERT_TRUE(parseDictionary(good));
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(parseDictionary(good.substr(0, size)), std::nullopt) << size;
  }
}

TEST(PropertyListData, SurvivesEveryChangeOfOneByteInABinaryFile) {
  const std::string good = binaryOfEveryKind();
  std::size_t readable = 0;
  for (std::size_t position = 0; position < good.size(); ++position) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string changed = good;
      changed[position] = static_cast<char>(byte);
      readable += parseDictionary(changed) ? 1U : 0U;
    }
  }
  // Those that leave it as it was are among them.
  EXPECT_GE(readable, good.size());
}

TEST(PropertyListData, SurvivesEveryCutAndEveryChangeOfOneByteInAnXmlFile) {
  const std::string good =
      "<?xml version=\"1.0\"?><!DOCTYPE plist><plist><dict><key>k</key><array><!-- c -->"
      "<string>a&#65;<![CDATA[b]]></string><integer>1</integer><real>1.5</real><data>AAE=</data>"
      "<date>2001-01-01T00:00:05Z</date><true/></array></dict></plist>";
  ASSERT_TRUE(parseDictionary(good));
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(parseDictionary(good.substr(0, size)), std::nullopt) << size;
  }
  std::size_t readable = 0;
  for (std::size_t position = 0; position < good.size(); ++position) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string changed = good;
      changed[position] = static_cast<char>(byte);
      readable += parseDictionary(changed) ? 1U : 0U;
    }
  }
  EXPECT_GE(readable, good.size());
}

TEST(PropertyListData, EndsSoonOnKeysThatCollide) {
  // Two keys that differ by "Aa" for "B@" have one hash in the table that libplist keeps.
  std::string plist = "<plist><dict>";
  for (std::size_t i = 0; i < 4096; ++i) {
    plist += "<key>";
    for (std::size_t bit = 0; bit < 12; ++bit) {
      plist += (i >> bit & 1U) != 0 ? "Aa" : "B@";
    }
    plist += "</key><true/>";
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(parseDictionary(plist + "</dict></plist>").value_or(Dictionary()).size(), 4096U);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(PropertyListFilesOnDisk, WritesXmlThatReadsAsTheSameValues) {
  const Dictionary root{
      {"array", PropertyList::Array{1, "two", PropertyList::Array{}, Dictionary{}}},
      {"boolean", true},
      {"data", PropertyList::Data(100, std::byte{0xA5})},
      {"date", Date(1'700'000'000s)},
      {"early date", Date(-8'000'000'000s)},
      {"empty data", PropertyList::Data{}},
      {"large", std::numeric_limits<std::uint64_t>::max()},
      {"late date", Date(9'000'000'000s)},
      {"real", 0.1},
      {"infinite", -std::numeric_limits<double>::infinity()},
      {"small", std::numeric_limits<std::int64_t>::min()},
      {"text & <k\xC3\xA4y>", " <&>\"'\t\r\n\xF0\x9F\x98\x80]]> "},
      {"", ""},
  };
  ASSERT_TRUE(write(root));
  EXPECT_THAT(readBytes(path_), testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_EQ(description(read().value_or(Dictionary())), description(root));
  EXPECT_EQ(read(), root);
  EXPECT_THAT(directory_.names(), ElementsAre("file.plist"));
}

TEST_F(PropertyListFilesOnDisk, WritesANumberThatIsNone) {
  ASSERT_TRUE(write({{"k", std::nan("")}}));
  const std::optional<Dictionary> root = read();
  ASSERT_TRUE(root);
  const auto* number = root->at("k").get<double>();
  EXPECT_TRUE(number != nullptr && std::isnan(*number));
}

TEST_F(PropertyListFilesOnDisk, ReadsRealsAlikeInALocaleWithADecimalComma) {
  const std::string locale = directory_.file("de_DE.UTF-8");
  const std::string compile = "localedef --no-archive -i de_DE -f UTF-8 " + locale;
  if (std::system((compile + " >/dev/null 2>&1").c_str()) != 0) {
    GTEST_SKIP() << "the sources of the locale are not installed";
  }
  setenv("LOCPATH", directory_.path().c_str(), 1);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
  const bool written = write({{"k", 1.5}});
  const std::optional<Dictionary> root = read();
  const std::string ownPoint = std::localeconv()->decimal_point;
  std::setlocale(LC_NUMERIC, "C");
  unsetenv("LOCPATH");
  EXPECT_TRUE(written);
  EXPECT_EQ(root, (Dictionary{{"k", 1.5}}));
  EXPECT_EQ(ownPoint, ",");
}

TEST_F(PropertyListFilesOnDisk, KeepsTheOldFileWhenTheNewOneCouldNotBeReadAgain) {
  writeBytes(path_, "old");
  PropertyList deep = PropertyList::Array{};
  for (std::size_t i = 0; i < PlistLimits::kNesting; ++i) {
    deep = PropertyList::Array{deep};
  }
  EXPECT_FALSE(write({{"k", "\x01"}}));
  EXPECT_FALSE(write({{"k", "\xFF"}}));
  EXPECT_FALSE(write({{"k", std::string("a\0b", 3)}}));
  EXPECT_FALSE(write({{"\x01", true}}));
  EXPECT_FALSE(write({{"k", PropertyList::Array{"\xEF\xBF\xBF"}}}));
  EXPECT_FALSE(write({{"k", Dictionary{{std::string("\0", 1), true}}}}));
  EXPECT_FALSE(write({{"k", std::string(PlistLimits::kFileSize, 'x')}}));
  EXPECT_FALSE(write({{"k", deep}}));
  EXPECT_FALSE(write({{"k", PropertyList::Array(PlistLimits::kNodes, true)}}));
  EXPECT_EQ(readBytes(path_), "old");
  EXPECT_THAT(directory_.names(), ElementsAre("file.plist"));
}

TEST_F(PropertyListFilesOnDisk, FailsToWriteWhereNoFileCanBe) {
  EXPECT_FALSE(files_.writeDictionary({}, directory_.file("missing/file.plist")));
  EXPECT_FALSE(files_.writeDictionary({}, directory_.path()));
  EXPECT_FALSE(files_.writeDictionary({}, "/dev/full"));
  EXPECT_FALSE(files_.writeDictionary({}, ""));
  EXPECT_THAT(directory_.names(), IsEmpty());
}

TEST_F(PropertyListFilesOnDisk, WritesThroughALink) {
  fs::create_symlink("target.plist", path_);
  ASSERT_TRUE(write({{"k", 1}}));
  ASSERT_TRUE(write({{"k", 2}}));
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(read(), (Dictionary{{"k", 2}}));
  EXPECT_THAT(directory_.names(), ElementsAre("file.plist", "target.plist"));
}

TEST_F(PropertyListFilesOnDisk, ReadsBothFormats) {
  writeBytes(path_, xmlPlistWith("<true/>"));
  EXPECT_EQ(read(), (Dictionary{{"k", true}}));
  writeBytes(path_, binaryPlistWith({"\x08"}));
  EXPECT_EQ(read(), (Dictionary{{"k", false}}));
}

TEST_F(PropertyListFilesOnDisk, ReadsXmlBehindAByteOrderMark) {
  writeBytes(path_, "\xEF\xBB\xBF" + xmlPlistWith("<true/>"));
  EXPECT_EQ(read(), (Dictionary{{"k", true}}));
  writeBytes(path_, "\xEF\xBB\xBF" + binaryPlistWith({"\x08"}));
  EXPECT_EQ(read(), std::nullopt);
}

TEST_F(PropertyListFilesOnDisk, ReadsNothingFromWhatIsNoReadableRegularFile) {
  EXPECT_EQ(read(), std::nullopt);
  fs::create_symlink("missing", path_);
  EXPECT_EQ(read(), std::nullopt);
  fs::remove(path_);
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_EQ(files_.dictionaryWithContentsOfFile(directory_.path()), std::nullopt);
  EXPECT_EQ(files_.dictionaryWithContentsOfFile("/dev/zero"), std::nullopt);
  EXPECT_EQ(files_.dictionaryWithContentsOfFile("/proc/self/mem"), std::nullopt);
}

TEST_F(PropertyListFilesOnDisk, ReadsNothingFromAFileThatIsTooLong) {
  writeBytes(path_, xmlPlistWith("<true/>") + std::string(PlistLimits::kFileSize, ' '));
  EXPECT_EQ(read(), std::nullopt);
}

TEST_F(PropertyListFilesOnDisk, ReadsNothingFromAFileThatIsEmpty) {
  writeBytes(path_, "");
  EXPECT_EQ(read(), std::nullopt);
}

}  // namespace
}  // namespace vendril::test
