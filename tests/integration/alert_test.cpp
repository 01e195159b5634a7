// Alerts on a real display: what a user sees of them and how they end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>

#include "support/AlertFixture.h"

namespace vendril {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ShownAlert : public ShownAlertFixture {};

TEST_F(ShownAlert, ReturnPressesTheButton) {
  whenAlertHasFocus([this] { display().pressKey("Return"); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(ShownAlert, EscapePressesTheButton) {
  whenAlertHasFocus([this] { display().pressKey("Escape"); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(ShownAlert, AClickPressesTheButton) {
  whenAlertHasFocus([this] { display().click(*display().picture().centre(isButtonColour)); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(ShownAlert, ClosingTheWindowIsAnotherResult) {
  whenAlertHasFocus([this] { display().pressKey("alt+F4"); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre("The alert ended without an answer: the helper ended with status "
                                 "1: the alert was closed without an answer"));
}

TEST_F(ShownAlert, AKilledHelperIsAnotherResult) {
  whenAlertHasFocus([this] { kill(display().activeWindowProcess().value(), SIGKILL); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre("The alert ended without an answer: the helper was ended by "
                                 "signal 9"));
}

TEST_F(ShownAlert, LosingTheDisplayIsAnotherResult) {
  whenAlertHasFocus([this] { display().breakDown(); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(HasSubstr("the helper ended with status")));
}

TEST_F(ShownAlert, TerminationTakesTheAlertAway) {
  int helper = 0;
  whenAlertHasFocus([this, &helper] {
    helper = display().activeWindowProcess().value();
    terminate();
  });
  EXPECT_EQ(makeEnglishAlert()->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre("The alert ended without an answer: the application terminates"));
  ASSERT_GT(helper, 0);
  EXPECT_EQ(kill(helper, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST_F(ShownAlert, AnAlertInsideAnotherIsAnsweredByItself) {
  long inner = 0;
  whenAlertHasFocus([this, &inner] {
    const int outerHelper = display().activeWindowProcess().value();
    pollInMainLoop([this, outerHelper] {
      if (display().activeWindowProcess().value_or(outerHelper) == outerHelper) {
        return false;
      }
      display().pressKey("Return");
      return true;
    });
    inner = makeEnglishAlert()->runModal();
    EXPECT_EQ(kill(outerHelper, 0), 0) << "the outer alert has ended, too";
    whenAlertHasFocus([this] { display().pressKey("Return"); });
  });
  EXPECT_EQ(makeEnglishAlert()->runModal(), 1000);
  EXPECT_EQ(inner, 1000);
}

TEST_F(ShownAlert, TheSameAlertCanBeShownAgain) {
  const std::unique_ptr<HelperAlert> alert = makeEnglishAlert();
  for (int showing = 0; showing < 2; ++showing) {
    whenAlertHasFocus([this] { display().pressKey("Return"); });
    EXPECT_EQ(alert->runModal(), 1000);
  }
}

TEST_F(ShownAlert, TheHelperEndsWhenItsStarterHasGone) {
  GErrorSlot error;
  const GObjectPtr<GSubprocess> helper(g_subprocess_new(
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE |
                                    G_SUBPROCESS_FLAGS_STDERR_SILENCE),
      error.out(), kRealHelper.c_str(), "warning", "Message", "Information", "OK", nullptr));
  ASSERT_TRUE(helper) << error.message();
  bool shown = false;
  whenAlertHasFocus([&shown] { shown = true; });
  while (!shown && !HasFailure()) {
    g_main_context_iteration(nullptr, TRUE);
  }
  // What the kernel does with the pipes of a process that has ended.
  g_output_stream_close(g_subprocess_get_stdin_pipe(helper.get()), nullptr, nullptr);
  g_subprocess_wait(helper.get(), nullptr, nullptr);
  EXPECT_EQ(g_subprocess_get_exit_status(helper.get()), 1);
}

TEST_F(ShownAlert, ALeftToRightTextHasItsIconOnTheLeft) {
  ScreenPicture picture;
  whenAlertHasFocus([this, &picture] {
    picture = display().picture();
    display().pressKey("Return");
  });
  makeEnglishAlert()->runModal();
  ASSERT_TRUE(picture.centre(isWarningColour));
  EXPECT_LT(picture.centre(isWarningColour)->x, picture.centre(isButtonColour)->x - 100);
}

TEST_F(ShownAlert, ARightToLeftTextHasItsIconOnTheRight) {
  ScreenPicture picture;
  whenAlertHasFocus([this, &picture] {
    picture = display().picture();
    display().pressKey("Return");
  });
  const std::unique_ptr<HelperAlert> alert = makeEnglishAlert();
  alert->setMessageText("خطأ في الاتصال بالشبكة");
  alert->runModal();
  ASSERT_TRUE(picture.centre(isWarningColour));
  EXPECT_GT(picture.centre(isWarningColour)->x, picture.centre(isButtonColour)->x + 100);
}

TEST_F(ShownAlert, AVeryLongTextLeavesTheButtonOnTheScreen) {
  std::string text;
  for (int line = 0; line < 500; ++line) {
    text += "Line " + std::to_string(line) + " of a text that does not end.\n";
  }
  whenAlertHasFocus([this] { display().click(*display().picture().centre(isButtonColour)); });
  const std::unique_ptr<HelperAlert> alert = makeEnglishAlert();
  alert->setMessageText(std::string(1000, 'W'));
  alert->setInformativeText(text);
  EXPECT_EQ(alert->runModal(), 1000);
}

TEST_F(ShownAlert, AVeryLongTextMakesNoAlertThatASmallScreenCannotHold) {
  constexpr int kSmallScreen = 600;
  constexpr int kTitleBarAndMargins = 100;
  ScreenPicture picture;
  whenAlertHasFocus([this, &picture] {
    picture = display().picture();
    display().pressKey("Return");
  });
  const std::unique_ptr<HelperAlert> alert = makeEnglishAlert();
  std::string text;
  for (int line = 0; line < 500; ++line) {
    text += "Line " + std::to_string(line) + " of a text that does not end.\n";
  }
  alert->setInformativeText(text);
  EXPECT_EQ(alert->runModal(), 1000);
  ASSERT_TRUE(picture.centre(isWarningColour) && picture.centre(isButtonColour));
  EXPECT_LT(picture.centre(isButtonColour)->y - picture.centre(isWarningColour)->y,
            kSmallScreen - kTitleBarAndMargins);
}

TEST_F(ShownAlert, ThisProcessMapsNoToolkit) {
  std::string duringAlert;
  const auto readMaps = [] {
    std::ifstream file("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  whenAlertHasFocus([&] {
    duringAlert = readMaps();
    display().pressKey("Return");
  });
  makeEnglishAlert()->runModal();
  for (const std::string& maps : {duringAlert, readMaps()}) {
    EXPECT_THAT(maps, HasSubstr("libgio"));
    EXPECT_THAT(maps, ::testing::Not(HasSubstr("libgtk")));
    EXPECT_THAT(maps, ::testing::Not(HasSubstr("libX11")));
  }
}

}  // namespace
}  // namespace vendril
