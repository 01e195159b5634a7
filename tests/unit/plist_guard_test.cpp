#include "platform/freedesktop/PlistBinaryGuard.h"
#include "platform/freedesktop/PlistGuard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "support/PlistBytes.h"

namespace vendril::test {
namespace {

bool isXml(std::string_view bytes) {
  return acceptedPlistFormat(bytes) == PlistFormat::xml;
}

bool isBinary(std::string_view bytes) {
  return acceptedPlistFormat(bytes) == PlistFormat::binary;
}

bool isRefused(std::string_view bytes) {
  return !acceptedPlistFormat(bytes);
}

bool takesXmlValue(std::string_view value) {
  return isXml(xmlPlistWith(value));
}

bool takesBinaryValue(const std::string& object) {
  return isBinary(binaryPlistWith({object}));
}

/// A key for each number, all of them in one chain of a table that hashes by 33 times plus byte.
std::string collidingKey(std::size_t number) {
  std::string key;
  for (std::size_t bit = 0; bit < 13; ++bit) {
    key += (number >> bit & 1U) != 0 ? "Aa" : "B@";
  }
  return key;
}

std::string xmlDictionary(std::size_t entries) {
  std::string dictionary = "<dict>";
  for (std::size_t i = 0; i < entries; ++i) {
    dictionary += "<key>" + collidingKey(i) + "</key><true/>";
  }
  return dictionary + "</dict>";
}

TEST(PlistGuard, KnowsNoFormatButXmlAndBinary) {
  EXPECT_TRUE(isRefused(""));
  EXPECT_TRUE(isRefused("{}"));
  EXPECT_TRUE(isRefused("{\"k\": 1}"));
  EXPECT_TRUE(isRefused("{ k = v; }"));
  EXPECT_TRUE(isRefused("bplist"));
  EXPECT_TRUE(isRefused("bplist00"));
  EXPECT_TRUE(isRefused("bplist01" + binaryPlistWith({"\x08"}).substr(8)));
  EXPECT_TRUE(isRefused("\xEF\xBB\xBF" + xmlPlistWith("<true/>")));
  EXPECT_TRUE(isXml(xmlPlistWith("<true/>")));
  EXPECT_TRUE(isBinary(binaryPlistWith({"\x08"})));
}

TEST(PlistGuard, TakesAFileOfOneMebibyteAndNoLargerOne) {
  const std::size_t around = xmlPlistWith("<string></string>").size();
  const auto file = [&](std::size_t size) {
    return xmlPlistWith("<string>" + std::string(size - around, 'x') + "</string>");
  };
  EXPECT_TRUE(isXml(file(PlistLimits::kFileSize)));
  EXPECT_TRUE(isRefused(file(PlistLimits::kFileSize + 1)));
}

TEST(PlistXmlGuard, TakesSixtyFourContainersInsideOneAnotherAndNoMore) {
  EXPECT_TRUE(takesXmlValue(nestedXmlArrays(63)));
  EXPECT_FALSE(takesXmlValue(nestedXmlArrays(64)));
  EXPECT_FALSE(takesXmlValue(repeated("<array>", 63) + "<dict/>" + repeated("</array>", 63)));
}

TEST(PlistXmlGuard, RefusesTwoHundredThousandNestedArrays) {
  EXPECT_TRUE(isRefused("<plist>" + nestedXmlArrays(200'000) + "</plist>"));
  EXPECT_TRUE(isRefused("<plist>" + repeated("<array>", 140'000)));
}

TEST(PlistXmlGuard, TakesAsManyNodesAsTheLimitAndNoMore) {
  const auto file = [](std::size_t nodes) {
    // The root, its key and the array are three nodes.
    return xmlPlistWith("<array>" + repeated("<true/>", nodes - 3) + "</array>");
  };
  EXPECT_TRUE(isXml(file(PlistLimits::kNodes)));
  EXPECT_TRUE(isRefused(file(PlistLimits::kNodes + 1)));
}

TEST(PlistXmlGuard, TakesADictionaryOfFourThousandEntriesAndNoneThatTakesLong) {
  EXPECT_TRUE(takesXmlValue(xmlDictionary(4096)));
  EXPECT_FALSE(takesXmlValue(xmlDictionary(4097)));
  EXPECT_FALSE(takesXmlValue("<array>" + xmlDictionary(3000) + xmlDictionary(3000) + "</array>"));
}

TEST(PlistXmlGuard, IsNotMisledByMarkupInsideComments) {
  EXPECT_TRUE(takesXmlValue("<!-- " + repeated("<array>", 100) + " --><true/>"));
  EXPECT_TRUE(takesXmlValue("<!-- \" --><true/>"));
  EXPECT_FALSE(takesXmlValue("<!-- -->" + nestedXmlArrays(64) + "<!-- -->"));
  EXPECT_FALSE(takesXmlValue("<!-->" + nestedXmlArrays(64) + "<!-- -->"));
  EXPECT_FALSE(takesXmlValue("<!-- <true/>"));
  EXPECT_FALSE(takesXmlValue("<!- -><true/>"));
}

TEST(PlistXmlGuard, IsNotMisledByMarkupInsideText) {
  EXPECT_TRUE(takesXmlValue("<string><![CDATA[</string><array>]]></string>"));
  EXPECT_TRUE(takesXmlValue("<string>a<!-- </string> -->b</string>"));
  EXPECT_FALSE(takesXmlValue("<string><![CDATA[</string>"));
  EXPECT_FALSE(takesXmlValue("<string><array></string>"));
  EXPECT_FALSE(takesXmlValue("<string><?x?></string>"));
  EXPECT_FALSE(takesXmlValue("<![CDATA[x]]><true/>"));
}

TEST(PlistXmlGuard, IsNotMisledByProcessingInstructions) {
  EXPECT_TRUE(isXml("<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + xmlPlistWith("<true/>")));
  EXPECT_TRUE(takesXmlValue("<?x <array> ?><true/>"));
  EXPECT_FALSE(takesXmlValue("<?x \"?>\" ?><true/>"));
  EXPECT_FALSE(takesXmlValue("<?x \"?><true/>"));
  EXPECT_FALSE(takesXmlValue("<?><true/><?x?>"));
  EXPECT_FALSE(takesXmlValue("<?x <true/>"));
}

TEST(PlistXmlGuard, TakesAPlainDocumentTypeAndRefusesAnInternalOne) {
  const std::string plist = xmlPlistWith("<true/>");
  EXPECT_TRUE(
      isXml("<!DOCTYPE plist PUBLIC \"-//A//DTD PLIST 1.0//EN\" \"http://a/b.dtd\">" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist [<!ENTITY e \"x\">]>" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist []>" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist SYSTEM \"[>\">" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist SYSTEM \">\">" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist><!DOCTYPE plist>" + plist));
  EXPECT_TRUE(isRefused("<!DOCTYPE plist"));
  EXPECT_FALSE(takesXmlValue("<!DOCTYPE plist><true/>"));
}

TEST(PlistXmlGuard, TakesAttributesOfTheRootElementAlone) {
  EXPECT_TRUE(isXml("<plist version=\"1.0\" a='b'><dict/></plist>"));
  EXPECT_TRUE(isRefused("<plist version=\"1>0\"><dict/></plist>"));
  EXPECT_TRUE(isRefused("<plist a=\"<\"><dict/></plist>"));
  EXPECT_TRUE(isRefused("<plists><dict/></plists>"));
  EXPECT_FALSE(takesXmlValue("<array a=\"/>\"></array>"));
  EXPECT_FALSE(takesXmlValue("<array a=\"b\"></array>"));
}

TEST(PlistXmlGuard, TakesXmlsOwnEntitiesAndCharactersAlone) {
  for (const std::string_view good :
       {"&amp;", "&lt;", "&gt;", "&apos;", "&quot;", "&#65;", "&#x9;", "&#x10FFFF;", "&amp;amp;"}) {
    EXPECT_TRUE(takesXmlValue("<string>" + std::string(good) + "</string>")) << good;
  }
  for (const std::string_view bad :
       {"&", "&amp", "&;", "&e;", "&ampx;", "&#;", "&#x;", "&#0;", "&#1;", "&#xD800;", "&#xFFFF;",
        "&#x110000;", "&# 65;", "&#-1;", "&am<!-- -->p;"}) {
    EXPECT_FALSE(takesXmlValue("<string>" + std::string(bad) + "</string>")) << bad;
    EXPECT_FALSE(takesXmlValue("<dict><key>" + std::string(bad) + "</key><true/></dict>")) << bad;
  }
  EXPECT_TRUE(takesXmlValue("<string><![CDATA[&e;]]></string>"));
}

TEST(PlistXmlGuard, RefusesTextThatIsNotUtf8OrNotXml) {
  EXPECT_TRUE(takesXmlValue("<string>\xC3\xA4\xF0\x9F\x98\x80</string>"));
  for (const std::string& bad :
       {std::string("\xE4"), std::string("\xC0\x80"), std::string("\xED\xA0\x80"),
        std::string("\x01"), std::string(1, '\0'), std::string("\xEF\xBF\xBF")}) {
    EXPECT_FALSE(takesXmlValue("<string>" + bad + "</string>"));
    EXPECT_FALSE(takesXmlValue("<!--" + bad + "--><true/>"));
  }
}

TEST(PlistXmlGuard, RefusesWhatIsNotOneValue) {
  EXPECT_TRUE(isXml(" <!-- a --><plist><!-- b --><dict/><?c d?></plist >\n<!-- e --> "));
  EXPECT_TRUE(isRefused("<dict/>"));
  EXPECT_TRUE(isRefused("<plist/>"));
  EXPECT_TRUE(isRefused("<plist></plist>"));
  EXPECT_TRUE(isRefused("<plist><dict/><dict/></plist>"));
  EXPECT_TRUE(isRefused("<plist><dict/>"));
  EXPECT_TRUE(isRefused("<plist><dict></plist>"));
  EXPECT_TRUE(isRefused("<plist><dict></array></plist>"));
  EXPECT_TRUE(isRefused("<plist><dict/></plist>x"));
  EXPECT_TRUE(isRefused("<plist><dict/></plist><plist><dict/></plist>"));
  EXPECT_TRUE(isRefused("<plist>x<dict/></plist>"));
  EXPECT_TRUE(isRefused("<plist></dict></plist>"));
}

TEST(PlistXmlGuard, RefusesADictionaryWhoseKeysAndValuesDoNotTakeTurns) {
  EXPECT_FALSE(takesXmlValue(""));
  EXPECT_FALSE(takesXmlValue("<true/><true/>"));
  EXPECT_FALSE(takesXmlValue("<key>l</key>"));
  EXPECT_FALSE(takesXmlValue("<true/><key>l</key>"));
  EXPECT_FALSE(takesXmlValue("<array><key>l</key></array>"));
  EXPECT_TRUE(isRefused("<plist><key>l</key></plist>"));
}

TEST(PlistXmlGuard, RefusesElementsThatItDoesNotKnow) {
  EXPECT_FALSE(takesXmlValue("<null/>"));
  EXPECT_FALSE(takesXmlValue("<Dict/>"));
  EXPECT_FALSE(takesXmlValue("</array/>"));
  EXPECT_FALSE(takesXmlValue("<plist><dict/></plist>"));
  EXPECT_FALSE(takesXmlValue("< true/>"));
}

TEST(PlistXmlGuard, RefusesScalarsThatTheirTypesDoNotSpellSo) {
  for (const std::string_view good :
       {"<integer>0</integer>", "<integer> -9223372036854775808\n</integer>",
        "<integer>18446744073709551615</integer>", "<integer>0x1F</integer>", "<real>nan</real>",
        "<real>-infinity</real>", "<real>1e999</real>", "<real>+1.5E-3</real>", "<data/>",
        "<data> YQ== </data>", "<date>2000-02-29T23:59:59Z</date>", "<true> </true >"}) {
    EXPECT_TRUE(takesXmlValue(good)) << good;
  }
  for (const std::string_view bad : {"<integer/>",
                                     "<integer></integer>",
                                     "<integer>1x</integer>",
                                     "<integer>010</integer>",
                                     "<integer>--1</integer>",
                                     "<integer>-9223372036854775809</integer>",
                                     "<integer>18446744073709551616</integer>",
                                     "<integer>1<!-- -->2</integer>",
                                     "<real/>",
                                     "<real>+-1</real>",
                                     "<real>1,5</real>",
                                     "<data>YQ=</data>",
                                     "<data>Y!==</data>",
                                     "<data>YQ==YQ==</data>",
                                     "<data>=</data>",
                                     "<data>A===</data>",
                                     "<date/>",
                                     "<date>2000-02-29</date>",
                                     "<date>2000-13-01T00:00:00Z</date>",
                                     "<date>2000-01-01T00:00:00Zx</date>",
                                     "<date>9999999999-01-01T00:00:00Z</date>",
                                     "<true>x</true>",
                                     "<true></false>"}) {
    EXPECT_FALSE(takesXmlValue(bad)) << bad;
  }
}

TEST(PlistBinaryGuard, TakesSixtyFourContainersInsideOneAnotherAndNoMore) {
  EXPECT_TRUE(isBinary(binaryPlistWith(nestedBinaryArrays(63))));
  EXPECT_TRUE(isRefused(binaryPlistWith(nestedBinaryArrays(64))));
}

TEST(PlistBinaryGuard, CountsTheDepthOfAnObjectThatItMetBeforeFromWhereItIsNamedAgain) {
  // The array of two names a short chain first, then the same chain below 20 more arrays.
  const auto file = [](std::size_t more) {
    std::vector<std::string> objects{binaryArray({3, 43})};
    for (std::size_t i = 0; i < 40; ++i) {
      objects.push_back(i + 1 < 40 ? binaryArray({i + 4}) : binaryArray({}));
    }
    for (std::size_t i = 0; i < more; ++i) {
      objects.push_back(binaryArray({i + 1 < more ? i + 44 : 3}));
    }
    return binaryPlistWith(objects);
  };
  EXPECT_TRUE(isBinary(file(22)));
  EXPECT_TRUE(isRefused(file(23)));
}

TEST(PlistBinaryGuard, RefusesAHundredThousandNestedArrays) {
  constexpr std::size_t kCount = 100'000;
  std::string bytes = "bplist00";
  std::string offsets;
  for (std::size_t i = 0; i < kCount; ++i) {
    offsets += bigEndianBytes(bytes.size(), 3);
    bytes += i + 1 < kCount ? '\xA1' + bigEndianBytes(i + 1, 3) : std::string("\xA0");
  }
  const std::size_t table = bytes.size();
  bytes += offsets + std::string(6, '\0') + "\x03\x03" + bigEndianBytes(kCount, 8) +
           bigEndianBytes(0, 8) + bigEndianBytes(table, 8);
  ASSERT_LT(bytes.size(), PlistLimits::kFileSize);
  EXPECT_TRUE(isRefused(bytes));
}

TEST(PlistBinaryGuard, RefusesThirtyArraysThatEachNameTheNextTwice) {
  std::vector<std::string> objects;
  for (std::size_t i = 0; i < 30; ++i) {
    objects.push_back(i < 29 ? binaryArray({i + 3, i + 3}) : binaryArray({}));
  }
  EXPECT_TRUE(isRefused(binaryPlistWith(objects)));
}

TEST(PlistBinaryGuard, TakesAsManyExpandedNodesAsTheLimitAndNoMore) {
  // The root, its key and an array of two: a tree of three arrays, each of which names the next
  // sixteen times, and below them a boolean; and an array of as many booleans as are left.
  const auto file = [](std::size_t nodes) {
    const std::vector<std::size_t> four(16, 4);
    const std::vector<std::size_t> five(16, 5);
    const std::vector<std::size_t> six(16, 6);
    const std::size_t inTree = 1 + 16 + 256 + 4096;
    const std::vector<std::size_t> rest(nodes - 2 - 1 - inTree - 1, 6);
    return binaryPlistWith({binaryArray({3, 7}), binaryArray(four), binaryArray(five),
                            binaryArray(six), "\x09", binaryArray(rest)});
  };
  EXPECT_TRUE(isBinary(file(PlistLimits::kNodes)));
  EXPECT_TRUE(isRefused(file(PlistLimits::kNodes + 1)));
}

TEST(PlistBinaryGuard, TakesAsMuchExpandedContentAsTheLimitAndNoMore) {
  constexpr std::size_t kShared = PlistLimits::kContent / 64;
  const auto file = [](std::size_t content) {
    std::vector<std::size_t> references(63, 3);
    references.push_back(4);
    // One byte of the content is the key of the root's entry.
    const std::size_t rest = content - 63 * kShared - 1;
    return binaryPlistWith({binaryArray(references), binaryData(std::string(kShared, 'x')),
                            binaryText(std::string(rest, 'x'))});
  };
  EXPECT_TRUE(isBinary(file(PlistLimits::kContent)));
  EXPECT_TRUE(isRefused(file(PlistLimits::kContent + 1)));
}

TEST(PlistBinaryGuard, RefusesManyReferencesToOneLongText) {
  const std::vector<std::size_t> references(60'000, 3);
  EXPECT_TRUE(isRefused(binaryPlistWith(
      {binaryArray(references), binaryText(std::string(std::size_t{800'000}, 'x'))})));
}

TEST(PlistBinaryGuard, RefusesObjectsThatContainThemselves) {
  EXPECT_FALSE(takesBinaryValue(binaryArray({2})));
  EXPECT_FALSE(takesBinaryValue(binaryArray({0})));
  EXPECT_FALSE(takesBinaryValue(binaryDictionary({1}, {2})));
  EXPECT_TRUE(isRefused(binaryPlistWith({binaryArray({3}), binaryArray({2})})));
}

TEST(PlistBinaryGuard, RefusesKeysThatAreNotText) {
  EXPECT_TRUE(isBinary(binaryPlistWith({binaryDictionary({1}, {3}), "\x09"})));
  EXPECT_TRUE(isRefused(binaryPlistWith({binaryDictionary({3}, {3}), "\x09"})));
  EXPECT_TRUE(isRefused(binaryPlistWith({binaryDictionary({3}, {3}), binaryArray({})})));
}

TEST(PlistBinaryGuard, RefusesReferencesToObjectsThatDoNotExist) {
  EXPECT_FALSE(takesBinaryValue(binaryArray({3})));
  EXPECT_FALSE(takesBinaryValue(binaryArray({0xFFFF})));
}

TEST(PlistBinaryGuard, RefusesKindsThatXmlDoesNotKnow) {
  EXPECT_FALSE(takesBinaryValue(std::string(1, '\0')));           // null
  EXPECT_FALSE(takesBinaryValue("\x0F"));                         // fill
  EXPECT_FALSE(takesBinaryValue(std::string("\x80\x01")));        // uid
  EXPECT_FALSE(takesBinaryValue("\xC0"));                         // set
  EXPECT_FALSE(takesBinaryValue("\x70"));                         // unknown
  EXPECT_FALSE(takesBinaryValue('\x21' + std::string(2, '\0')));  // a real of two bytes
  EXPECT_FALSE(takesBinaryValue('\x32' + std::string(4, '\0')));  // a date of four bytes
  EXPECT_FALSE(takesBinaryValue('\x15' + std::string(32, '\0')));
}

TEST(PlistBinaryGuard, TakesWideIntegersThatFitInSixtyFourBits) {
  const std::string low(8, '\xFF');
  EXPECT_TRUE(takesBinaryValue('\x14' + std::string(8, '\0') + low));
  EXPECT_FALSE(takesBinaryValue('\x14' + std::string(7, '\0') + '\x01' + low));
}

TEST(PlistBinaryGuard, RefusesTextThatIsNotUnicode) {
  EXPECT_TRUE(takesBinaryValue(binaryText("\xC3\xA4")));
  EXPECT_FALSE(takesBinaryValue(binaryText("\xE4")));
  EXPECT_FALSE(takesBinaryValue(binaryText(std::string(1, '\0'))));
  EXPECT_TRUE(takesBinaryValue(binaryUtf16(u"\u00E4\U0001F600")));
  EXPECT_FALSE(takesBinaryValue(binaryUtf16({u"\xD83D", 1})));
  EXPECT_FALSE(takesBinaryValue(binaryUtf16({u"\xD83Dx", 2})));
  EXPECT_FALSE(takesBinaryValue(binaryUtf16({u"\xDE00", 1})));
  EXPECT_FALSE(takesBinaryValue(binaryUtf16(std::u16string(1, u'\0'))));
}

TEST(PlistBinaryGuard, RefusesCountsThatReachBeyondTheObjects) {
  for (const unsigned kind : {0x4U, 0x5U, 0x6U, 0xAU, 0xDU}) {
    const auto marker = static_cast<char>(kind << 4U | 0xFU);
    for (const std::uint64_t count : {std::uint64_t{1} << 20U, std::uint64_t{1} << 63U,
                                      std::numeric_limits<std::uint64_t>::max()}) {
      EXPECT_FALSE(takesBinaryValue(marker + ('\x13' + bigEndianBytes(count, 8)))) << kind;
    }
    EXPECT_FALSE(takesBinaryValue(std::string(1, marker))) << kind;
    EXPECT_FALSE(takesBinaryValue(std::string(100'000, marker))) << kind;
    EXPECT_FALSE(takesBinaryValue(marker + ('\x14' + std::string(16, '\0')))) << kind;
  }
}

TEST(PlistBinaryGuard, RefusesATrailerThatDoesNotFitTheFile) {
  const std::string good = binaryPlistWith({"\x09"});
  ASSERT_TRUE(isBinary(good));
  const std::size_t trailer = good.size() - 32;
  const auto with = [&](std::size_t position, std::uint64_t value, std::size_t size) {
    return std::string(good).replace(trailer + position, size, bigEndianBytes(value, size));
  };
  const std::uint64_t huge = std::numeric_limits<std::uint64_t>::max();
  for (const std::uint64_t size : {0U, 9U, 255U}) {
    EXPECT_TRUE(isRefused(with(6, size, 1))) << "offset size " << size;
    EXPECT_TRUE(isRefused(with(7, size, 1))) << "reference size " << size;
  }
  for (const std::uint64_t count : {std::uint64_t{0}, std::uint64_t{4}, huge / 4 + 2, huge}) {
    EXPECT_TRUE(isRefused(with(8, count, 8))) << "object count " << count;
  }
  for (const std::uint64_t root : {std::uint64_t{3}, huge}) {
    EXPECT_TRUE(isRefused(with(16, root, 8))) << "root " << root;
  }
  for (const std::uint64_t table : {std::uint64_t{0}, std::uint64_t{8}, trailer, huge}) {
    EXPECT_TRUE(isRefused(with(24, table, 8))) << "offset table " << table;
  }
}

TEST(PlistBinaryGuard, RefusesAnObjectThatLiesInTheTableOfOffsets) {
  constexpr std::string_view kTrailer(
      "\0\0\0\0\0\0\1\1"
      "\0\0\0\0\0\0\0\1"
      "\0\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\x09",
      32);
  const auto plistWithObjectAt = [&](char offset) {
    return std::string("bplist00\x09") + offset + std::string(kTrailer);
  };
  EXPECT_TRUE(isSafeBinaryPlist(plistWithObjectAt(8)));
  EXPECT_FALSE(isSafeBinaryPlist(plistWithObjectAt(9)));
}

TEST(PlistBinaryGuard, EndsSoonOnOverlappingContainers) {
  // Every object is the same long array, so that each visit would go through all its elements.
  constexpr std::size_t kCount = 60'000;
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < kCount; ++i) {
    all.push_back(i);
  }
  std::string bytes = "bplist00" + binaryArray(all);
  const std::size_t table = bytes.size();
  bytes += repeated(bigEndianBytes(8, 4), kCount) + std::string(6, '\0') + "\x04\x02" +
           bigEndianBytes(kCount, 8) + bigEndianBytes(0, 8) + bigEndianBytes(table, 8);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(isRefused(bytes));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vendril::test
