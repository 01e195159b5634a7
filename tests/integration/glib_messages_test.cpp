#include "platform/freedesktop/GlibMessages.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeSystemLog.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(GlibMessages, GoToTheSystemLogWithTheirDomain) {
  FakeSystemLog log;
  const GlibMessages messages(log);
  g_log("Some-Library", G_LOG_LEVEL_WARNING, "%s", "a warning");
  g_log(nullptr, G_LOG_LEVEL_MESSAGE, "%s", "a message");
  EXPECT_THAT(log.messages(), ElementsAre("Some-Library: a warning", "GLib: a message"));
}

TEST(GlibMessages, ThatGlibHidesStayHidden) {
  FakeSystemLog log;
  const GlibMessages messages(log);
  g_log("Some-Library", G_LOG_LEVEL_DEBUG, "%s", "a detail");
  g_log("Some-Library", G_LOG_LEVEL_INFO, "%s", "another one");
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(GlibMessages, GoToStandardErrorAgainOnceTheLogIsGone) {
  FakeSystemLog log;
  { const GlibMessages messages(log); }
  testing::internal::CaptureStderr();
  g_log("Some-Library", G_LOG_LEVEL_WARNING, "%s", "a late warning");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("a late warning"));
  EXPECT_THAT(log.messages(), IsEmpty());
}

}  // namespace
}  // namespace vendril
