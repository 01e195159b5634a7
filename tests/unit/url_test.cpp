#include "platform/Url.h"

#include <gmock/gmock.h>

namespace vendril {
namespace {

using testing::Eq;
using testing::Optional;

bool isUrl(std::string_view text) {
  return Url::parse(text).has_value();
}

TEST(Url, KeepsItsTextByteForByte) {
  const std::string text = "Vendril://Host:80/a/../b?portalURI=http://p/%7e?x=1&y=#f%zz";
  EXPECT_EQ(Url::parse(text)->absoluteString(), text);
}

TEST(Url, AllowsEveryCharacterThatAUriMayHold) {
  EXPECT_TRUE(isUrl("x:abcxyzABCXYZ0189-._~:/?@!$&'()*+,;=%"));
  EXPECT_TRUE(isUrl("x://[::1]/"));
  EXPECT_TRUE(isUrl("x:a#b"));
}

TEST(Url, RefusesEveryOtherByte) {
  constexpr std::string_view kAllowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/?#@!$&'()*+,;=%";
  for (int byte = 0; byte < 256; ++byte) {
    const char character = static_cast<char>(byte);
    const std::string text = std::string("x:a") + character + "b";
    EXPECT_EQ(isUrl(text), kAllowed.find(character) != std::string_view::npos) << "byte " << byte;
  }
}

TEST(Url, AMalformedEscapePasses) {
  for (const char* text : {"x:%zz", "x:%", "x:%4", "x:a%G0b", "x:%ff"}) {
    EXPECT_TRUE(isUrl(text)) << text;
  }
}

TEST(Url, AnEmptyTextIsNone) {
  EXPECT_FALSE(isUrl(""));
}

TEST(Url, StructuresThatParse) {
  for (const char* text :
       {"vendril:", "vendril:a:b:c", "mailto:a@b", "http://h", "http://h:", "http://h:80",
        "http://u:p@h:80/", "http:///path", "http://[::1]", "http://[::1]:80/", "http://u@[v1.x]/",
        "x://?q", "x://#f", "//host/path", "/path", "path/with:colon", "?a:b", "#f", "a+b-c.d:e"}) {
    EXPECT_TRUE(isUrl(text)) << text;
  }
}

TEST(Url, StructuresThatDoNotParse) {
  for (const char* text : {":",
                           ":a",
                           "1a:b",
                           "a_b:c",
                           "-a:b",
                           "x:a#b#c",
                           "http://h:80a/",
                           "http://a:b:c/",
                           "http://u@v@h/",
                           "http://[::1",
                           "http://::1]/",
                           "http://[]/",
                           "http://[::1]x/",
                           "http://[::1]:x/",
                           "http://[a@b]/",
                           "http://[u]@h/",
                           "http://h/[",
                           "x:a]",
                           "x:?[",
                           "//h:x"}) {
    EXPECT_FALSE(isUrl(text)) << text;
  }
}

TEST(Url, SchemeIsThePartBeforeTheFirstColonAsWritten) {
  EXPECT_EQ(Url::parse("VenDril:a:b")->scheme(), "VenDril");
  EXPECT_EQ(Url::parse("a/b:c")->scheme(), "");
  EXPECT_EQ(Url::parse("//h:1")->scheme(), "");
}

TEST(Url, UrlsAreEqualWhenTheirTextsAre) {
  EXPECT_EQ(Url::parse("x:a"), Url::parse("x:a"));
  EXPECT_NE(Url::parse("x:a"), Url::parse("X:a"));
}

TEST(FileUrl, EscapesWhatAPathDoesNotAllow) {
  EXPECT_EQ(Url::fileUrlWithPath("/a b/caf\xC3\xA9;?#%[].x").absoluteString(),
            "file:///a%20b/caf%C3%A9%3B%3F%23%25%5B%5D.x");
}

TEST(FileUrl, GivesItsPathBack) {
  for (const char* path : {"/", "/opt/vendril/bin/vendril", "/a b/caf\xC3\xA9;?#%41[]", "/a//b"}) {
    const Url url = Url::fileUrlWithPath(path);
    EXPECT_TRUE(isUrl(url.absoluteString()));
    EXPECT_THAT(url.fileSystemPath(), Optional(Eq(path)));
  }
}

TEST(FileUrl, PathIsTheDecodedPathWithoutQueryAndFragment) {
  const auto path = [](const char* text) { return Url::parse(text)->fileSystemPath(); };
  EXPECT_THAT(path("file:///a%20b?q#f"), Optional(Eq("/a b")));
  EXPECT_THAT(path("FILE:/a"), Optional(Eq("/a")));
  EXPECT_THAT(path("file://localhost/a"), Optional(Eq("/a")));
}

TEST(FileUrl, OtherUrlsHaveNoPath) {
  for (const char* text : {"http:///a", "file://other/a", "file:a", "file:", "file://localhost",
                           "/a", "files:///a", "file:///%zz", "file:///%ff", "file:///a%00b"}) {
    EXPECT_EQ(Url::parse(text)->fileSystemPath(), std::nullopt) << text;
  }
}

TEST(HasScheme, ComparesUpToTheColonWithoutAsciiCase) {
  EXPECT_TRUE(hasScheme("VENDRIL://x", "vendril"));
  EXPECT_TRUE(hasScheme("vendril:", "Vendril"));
  EXPECT_FALSE(hasScheme("vendril", "vendril"));
  EXPECT_FALSE(hasScheme("vendrils:", "vendril"));
  EXPECT_FALSE(hasScheme("vendri:", "vendril"));
  EXPECT_FALSE(hasScheme("", "vendril"));
}

}  // namespace
}  // namespace vendril
