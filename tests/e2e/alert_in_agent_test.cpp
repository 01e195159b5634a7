#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <optional>
#include <string>

#include "support/LinkToReportFixture.h"
#include "support/VirtualDisplay.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kTitle = "Vendril";

std::size_t threadsOf(pid_t process) {
  const std::filesystem::directory_iterator entries("/proc/" + std::to_string(process) + "/task");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

/// The agent while it shows its real alert on a virtual display.
class AlertInAgent : public LinkToReportFixture {
 protected:
  void SetUp() override {
    if (const auto missing = VirtualDisplay::missingProgram()) {
      GTEST_SKIP() << *missing << " is not installed";
    }
    display.emplace(agent.home().root().string());
    process.emplace(std::vector<std::string>{VENDRIL_BUILD_DIR "/tests/alert_agent"},
                    ChildProcess::Environment{{"DISPLAY", display->name()},
                                              {"GDK_BACKEND", "x11"},
                                              {"GSK_RENDERER", "cairo"},
                                              {"GTK_A11Y", "none"}});
    ASSERT_TRUE(process->waitForErr("Started")) << process->err();
  }

  void showAlert() {
    process->signal(SIGUSR1);
    ASSERT_TRUE(runMainLoopUntil([this] { return display->activeWindowTitle() == kTitle; }))
        << process->err();
  }

  /// Presses the button, again while the window does not take keys yet.
  void dismissAlert() {
    ASSERT_TRUE(runMainLoopUntil([this] {
      display->pressKey("Return");
      return display->activeWindowTitle() != kTitle;
    })) << process->err();
  }

  void confirmAlert() {
    dismissAlert();
    EXPECT_TRUE(
        process->waitForErr("User confirmed about network connection issues, remove "
                            "errorAlert"))
        << process->err();
  }

  std::string memoryMap() const {
    return readFile("/proc/" + std::to_string(process->pid()) + "/maps");
  }

  std::optional<VirtualDisplay> display;
  std::optional<ChildProcess> process;
};

TEST_F(AlertInAgent, LinkThatComesWhileTheAlertIsUpReachesThePortal) {
  showAlert();
  agent.openOnBus({link("7")});
  EXPECT_TRUE(portal.waitForRequests(1)) << process->err();
  EXPECT_EQ(display->activeWindowTitle(), kTitle) << "the alert is still up";
  confirmAlert();
}

TEST_F(AlertInAgent, SecondCallWhileTheAlertIsUpShowsNoOther) {
  showAlert();
  process->signal(SIGUSR1);
  agent.openOnBus({link("7")});
  EXPECT_TRUE(portal.waitForRequests(1)) << process->err();
  confirmAlert();
}

TEST_F(AlertInAgent, AgentMapsNoToolkitBeforeDuringOrAfterAnAlert) {
  EXPECT_THAT(memoryMap(), HasSubstr("libgio-2.0")) << "the map is readable";
  EXPECT_THAT(memoryMap(), Not(HasSubstr("libgtk")));
  showAlert();
  EXPECT_THAT(memoryMap(), Not(HasSubstr("libgtk")));
  confirmAlert();
  EXPECT_THAT(memoryMap(), Not(HasSubstr("libgtk")));
}

TEST_F(AlertInAgent, AgentThatTerminatesTakesItsAlertAway) {
  showAlert();
  process->signal(SIGTERM);
  EXPECT_EQ(process->waitForExit(), 0) << process->err();
  EXPECT_TRUE(runMainLoopUntil([this] { return display->activeWindowTitle() != kTitle; }));
}

TEST_F(AlertInAgent, NoThreadAndNoDescriptorIsLeftAfterAnAlert) {
  const std::size_t threads = threadsOf(process->pid());
  const std::size_t descriptors = openDescriptors(process->pid());
  for (int round = 0; round < 3; ++round) {
    showAlert();
    dismissAlert();
  }
  EXPECT_TRUE(runMainLoopUntil([&] {
    return threadsOf(process->pid()) <= threads && openDescriptors(process->pid()) <= descriptors;
  })) << threadsOf(process->pid())
      << " threads instead of " << threads << ", " << openDescriptors(process->pid())
      << " descriptors instead of " << descriptors;
}

}  // namespace
}  // namespace vendril
