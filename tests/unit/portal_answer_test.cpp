#include "portal/Answer.h"

#include <gtest/gtest.h>

namespace vendril::portal {
namespace {

TEST(PortalAnswer, StatusIsANumberFrom200To599) {
  for (const auto& [name, status] : {std::pair("200", 200), {"204", 204}, {"599", 599}}) {
    const auto answer = parseAnswer(name);
    ASSERT_TRUE(answer) << name;
    EXPECT_EQ(answer->kind, Answer::Kind::status);
    EXPECT_EQ(answer->status, status);
  }
}

TEST(PortalAnswer, NamedAnswersHaveTheirKindAndStatus) {
  EXPECT_EQ(parseAnswer("redirect")->kind, Answer::Kind::redirect);
  EXPECT_EQ(parseAnswer("redirect")->status, 302);
  EXPECT_EQ(parseAnswer("slow")->kind, Answer::Kind::slow);
  EXPECT_EQ(parseAnswer("slow")->status, 200);
  EXPECT_EQ(parseAnswer("reset")->kind, Answer::Kind::reset);
}

TEST(PortalAnswer, AnythingElseIsNone) {
  for (const char* name : {"", "0", "100", "199", "600", "2000", "-200", "+200", " 200", "200 ",
                           "20x", "Slow", "99999999999999999999"}) {
    EXPECT_FALSE(parseAnswer(name)) << name;
  }
}

}  // namespace
}  // namespace vendril::portal
