#include "portal/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace vendril::portal {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

Report reportWith(const std::string& body) {
  Report report;
  report.number = 7;
  report.time = "2026-11-21T09:30:00.123Z";
  report.method = "POST";
  report.target = "/report?session_id=4711";
  report.headers = {{"content-type", "application/x-www-form-urlencoded"}};
  report.body = body;
  report.answer = "status 200";
  report.successful = true;
  return report;
}

TEST(PortalReport, JsonHasTheRequestTheBodyAndTheDecodedFields) {
  EXPECT_EQ(toJson(reportWith("session_id=a%20b&command=set_data")),
            R"({"number":7,"time":"2026-11-21T09:30:00.123Z","method":"POST",)"
            R"("target":"/report?session_id=4711",)"
            R"("headers":[["content-type","application/x-www-form-urlencoded"]],)"
            R"("fields":[["session_id","a b"],["command","set_data"]],)"
            R"("body":"session_id=a%20b&command=set_data","answer":"status 200",)"
            R"("successful":true})");
}

TEST(PortalReport, JsonShowsBytesThatAreNotUtf8AsReplacementCharacters) {
  EXPECT_THAT(toJson(reportWith("a=\xFFz")), HasSubstr("\"body\":\"a=\xEF\xBF\xBDz\""));
  EXPECT_THAT(toJson(reportWith("a=%FFz")), HasSubstr("[\"a\",\"\xEF\xBF\xBDz\"]"));
}

TEST(PortalReport, JsonIsOneLineWhateverTheBodyHolds) {
  const std::string json = toJson(reportWith(std::string("a=1\r\n\ndata: forged\0b", 20)));
  EXPECT_THAT(json, Not(HasSubstr("\n")));
  EXPECT_THAT(json, Not(HasSubstr("\r")));
  EXPECT_THAT(json, HasSubstr(R"(a=1\r\n\ndata: forged\u0000b)"));
}

TEST(PortalReport, TextShowsTheFieldsAndTheAnswer) {
  EXPECT_EQ(toText(reportWith("session_id=a%20b&command=set_data")),
            "POST /report?session_id=4711\n"
            "  Content-Type: application/x-www-form-urlencoded\n"
            "  session_id = a b\n"
            "  command = set_data\n"
            "  answer: status 200\n\n");
}

TEST(PortalReport, TextHasNoControlCharacters) {
  EXPECT_THAT(toText(reportWith("a%1B=b%0A%7F")), HasSubstr("  a? = b??\n"));
}

TEST(PortalReport, TextHasNothingThatATerminalWouldObeyOrShowElsewhere) {
  for (const char* code :
       {"%C2%80", "%C2%9B", "%C2%9F", "%E2%80%A8", "%E2%80%A9", "%D8%9C", "%E2%80%8E", "%E2%80%8F",
        "%E2%80%AA", "%E2%80%AE", "%E2%81%A6", "%E2%81%A9", "%00"}) {
    EXPECT_THAT(toText(reportWith(std::string("a=b") + code + "c")), HasSubstr("  a = b?c\n"))
        << code;
  }
}

TEST(PortalReport, TextIsUtf8WhateverTheBodyHolds) {
  EXPECT_THAT(toText(reportWith("a=b%9Bc%C3%BC")), HasSubstr("  a = b\xEF\xBF\xBD"
                                                             "c\xC3\xBC\n"));
}

TEST(PortalReport, TimeIsInUtcWithMilliseconds) {
  EXPECT_TRUE(
      std::regex_match(currentTime(), std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")))
      << currentTime();
}

}  // namespace
}  // namespace vendril::portal
