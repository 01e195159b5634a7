#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/JsonText.h"
#include "support/ToolFixture.h"

namespace vendril {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kClosing = "/nonexistent/bus";

/// `vendrilctl status` in sessions and on terminals of several kinds.
class ToolStatusOfASession : public ToolFixture {};

TEST_F(ToolStatusOfASession, SessionWithoutABusIsSaidToHaveNone) {
  expectFinding("session", "no-bus", "error",
                {{"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                 {"XDG_RUNTIME_DIR", agent.home().root().string()}});
  expectFinding("session", "bus-unreachable", "error",
                {{"DBUS_SESSION_BUS_ADDRESS", std::string("unix:path=") + kClosing}});
}

TEST_F(ToolStatusOfASession, AddressThatWouldStartABusNamesNone) {
  for (const std::string address : {"autolaunch:", "unix:path=/nonexistent/bus;autolaunch:"}) {
    expectFinding("session", "no-bus", "error", {{"DBUS_SESSION_BUS_ADDRESS", address}});
  }
}

TEST_F(ToolStatusOfASession, RootWhoLooksIntoHerOwnSessionIsToldWhoseItIs) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can be root by sudo";
  }
  const ChildProcess::Environment sudo{{"SUDO_USER", "alice"}, {"SUDO_UID", "1234"}};
  expectFinding("session", "other-user", "warning", sudo);
  EXPECT_THAT(textAt(check("session", sudo), "remedy"),
              StartsWith("sudo -u alice XDG_RUNTIME_DIR=/run/user/1234 "));
}

TEST_F(ToolStatusOfASession, TerminalGetsATableInColoursUnlessTheyAreUnwanted) {
  const Words command{"script",   "--quiet", "--return", "--command", program() + " status",
                      "/dev/null"};
  const std::string table = runProgram(command, {{"TERM", "xterm"}}).out;
  EXPECT_THAT(table, HasSubstr("  \x1B[32mok     \x1B[0m  program            "));
  for (const ChildProcess::Environment& plain :
       {ChildProcess::Environment{{"NO_COLOR", "1"}, {"TERM", "xterm"}},
        ChildProcess::Environment{{"TERM", "dumb"}}}) {
    const std::string text = runProgram(command, plain).out;
    EXPECT_THAT(text, HasSubstr("  ok       program            "));
    EXPECT_THAT(text, Not(HasSubstr("\x1B")));
  }
  EXPECT_THAT(run({"status"}).out, Not(HasSubstr("\x1B")));
}

}  // namespace
}  // namespace vendril
