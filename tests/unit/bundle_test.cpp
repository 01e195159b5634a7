#include "platform/Bundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeBundle.h"

namespace vendril {
namespace {

using testing::Eq;
using testing::Optional;

TEST(Bundle, GivesAnEntryThatIsATextAsOne) {
  FakeBundle bundle;
  bundle.info.insert_or_assign("Empty", "");
  EXPECT_THAT(bundle.infoString("CFBundleName"), Optional(Eq("Vendril")));
  EXPECT_THAT(bundle.infoString("Empty"), Optional(Eq("")));
}

TEST(Bundle, HasNoTextWhereAnEntryIsMissingOrOfAnotherKind) {
  FakeBundle bundle;
  bundle.info.insert_or_assign("Number", 1);
  EXPECT_EQ(bundle.infoString("Missing"), std::nullopt);
  EXPECT_EQ(bundle.infoString("Number"), std::nullopt);
  EXPECT_EQ(bundle.infoString("CFBundleURLTypes"), std::nullopt);
}

}  // namespace
}  // namespace vendril
