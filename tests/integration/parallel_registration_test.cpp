#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

#include "platform/freedesktop/DirectoryLock.h"
#include "support/LaunchServicesFixture.h"

namespace vendril {
namespace {

using testing::ElementsAre;

class ParallelRegistration : public LaunchServicesOfTheDesktop {
 protected:
  static constexpr int kCount = 40;

  static std::string scheme(int number) { return "scheme" + std::to_string(number); }

  void expectAllRegistered() {
    for (int i = 0; i < kCount; ++i) {
      EXPECT_EQ(handler(scheme(i)), kOurs) << scheme(i);
    }
    EXPECT_NE(list().find("x-scheme-handler/http = browser.desktop;other.desktop\n"),
              std::string::npos);
  }

  void SetUp() override {
    files_.application(kOurs);
    files_.mimeApps(kUsersList);
  }
};

TEST_F(ParallelRegistration, OfManyProcessesLosesNothing) {
  std::vector<pid_t> children;
  for (int i = 0; i < kCount; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      _exit(registerOurs(scheme(i)) == LaunchServices::kSuccess ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  expectAllRegistered();
}

TEST_F(ParallelRegistration, WaitsForALockOnlySoLong) {
  using std::chrono::milliseconds;
  const auto held = DirectoryLock::acquire(home_.config(), milliseconds(0));
  ASSERT_TRUE(held);
  EXPECT_FALSE(DirectoryLock::acquire(home_.config(), milliseconds(20)));
}

TEST_F(ParallelRegistration, LockLeavesNoFileBehind) {
  ASSERT_EQ(registerOurs(), LaunchServices::kSuccess);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(home_.config())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, ElementsAre("mimeapps.list"));
}

}  // namespace
}  // namespace vendril
