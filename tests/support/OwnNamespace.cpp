#include "support/OwnNamespace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "support/UniqueFd.h"

namespace vendril {
namespace {

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kNotPermitted = 77;

bool writeText(const char* path, const std::string& text) {
  const UniqueFd file(::open(path, O_WRONLY | O_CLOEXEC));
  return ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

/// A user who is not root gets a namespace of users too, in which the others may be made. Files can
/// only be made by users and groups that it knows.
bool enterAsUser(int namespaces) {
  const std::string user = std::to_string(::getuid());
  const std::string group = std::to_string(::getgid());
  return ::unshare(CLONE_NEWUSER | namespaces) == 0 && writeText("/proc/self/setgroups", "deny") &&
         writeText("/proc/self/uid_map", user + " " + user + " 1") &&
         writeText("/proc/self/gid_map", group + " " + group + " 1");
}

bool switchLoopbackOn() {
  const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq request{};
  std::string_view("lo").copy(request.ifr_name, IFNAMSIZ - 1);
  request.ifr_flags = IFF_UP;
  return ::ioctl(socket.get(), SIOCSIFFLAGS, &request) == 0;
}

bool enter(Own own) {
  const bool network = own == Own::mountsAndNetwork;
  const int namespaces = CLONE_NEWNS | (network ? CLONE_NEWNET : 0);
  return (::unshare(namespaces) == 0 || enterAsUser(namespaces)) &&
         ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         (!network || switchLoopbackOn());
}

int runChild(Own own, const std::function<void()>& body) {
  if (!enter(own)) {
    std::perror("namespace");
    return kNotPermitted;
  }
  try {
    body();
  } catch (const std::exception& exception) {
    ADD_FAILURE() << exception.what();
  }
  return testing::Test::HasFailure() ? kFailed : kPassed;
}

}  // namespace

void runInOwnNamespace(Own own, const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const int result = runChild(own, body);
    std::fflush(nullptr);
    ::_exit(result);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotPermitted) {
    GTEST_SKIP() << "The system allows no namespaces of our own";
  }
  EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), kPassed) << "as printed above";
}

}  // namespace vendril
