#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "support/JsonText.h"
#include "support/ToolFixture.h"

namespace vendril {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kFakeJournal = VENDRIL_BUILD_DIR "/tests/fake_journal";
constexpr int kNotPermitted = 77;

/// `vendrilctl log`, wherever the agent's lines are.
class ToolLog : public ToolFixture {
 protected:
  /// Starts the agent with its standard error in a file, as a session that keeps one does.
  std::unique_ptr<ChildProcess> startWithErrorsIn(const std::string& path) const {
    auto process = std::make_unique<ChildProcess>(
        Words{"sh", "-c", "exec \"$0\" 2>>\"$1\"", InstalledAgent::program(), path});
    EXPECT_TRUE(
        runMainLoopUntil([&path] { return readFile(path).find("Started") != std::string::npos; }));
    return process;
  }

  const std::string sessionErrors = agent.home().home() / ".session-errors";
  const std::string logFile = agent.home().root() / "logs/Vendril.log";
};

TEST_F(ToolLog, LinesThatAreNowhereAreSaidToBeSo) {
  const ProgramRun text = run({"log"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, StartsWith("there is no journal here, and the log file " + logFile));
  EXPECT_THAT(text.out, EndsWith("its lines went to its standard error\n"));
  const Object answer = json({"log"});
  EXPECT_EQ(textAt(answer, "verdict"), "nowhere");
  EXPECT_EQ(textAt(answer, "source"), "none");
  EXPECT_EQ(run({"log", "-f"}).status, 1);
  const auto process = agent.startAndWait();
  EXPECT_THAT(run({"log"}).out, HasSubstr("go to its standard error, which leads to pipe:["));
}

TEST_F(ToolLog, LinesAreFoundWhereTheStandardErrorOfTheAgentLeads) {
  writeFile(sessionErrors, "somebody else's line\n\tand its second\n");
  const auto process = startWithErrorsIn(sessionErrors);
  const std::string writer = " vendril[" + std::to_string(process->pid()) + "] ";
  const ProgramRun text = run({"log", "-n", "1"});
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_THAT(text.out, HasSubstr(writer + "There is no URL buffered\n"));
  EXPECT_THAT(text.out, Not(HasSubstr("Started")));
  EXPECT_THAT(run({"log"}).out, Not(HasSubstr("somebody else")));
  const Object answer = json({"log", "--lines", "2"});
  EXPECT_EQ(textAt(answer, "source"), "standard-error");
  EXPECT_EQ(textAt(answer, "path"), sessionErrors);
  const auto& records = *answer.at("records").get<PropertyList::Array>();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(textAt(*records[0].get<Object>(), "message"), "Started");
  EXPECT_EQ(textAt(*records[0].get<Object>(), "process"), std::to_string(process->pid()));
}

TEST_F(ToolLog, FollowingShowsNewLinesAsTheyCome) {
  const auto process = startWithErrorsIn(sessionErrors);
  ChildProcess follower({program(), "log", "--follow"});
  ASSERT_TRUE(follower.waitForOut("Started\n")) << follower.err();
  ASSERT_EQ(run({"open", link("7")}).status, 0);
  EXPECT_TRUE(follower.waitForOut("has been successfully sent with HTTP status code: 200\n"))
      << follower.out();
  follower.signal(SIGTERM);
  EXPECT_EQ(follower.waitForExit(), 128 + SIGTERM);
}

TEST_F(ToolLog, LogFileIsShownWhereItHoldsSomething) {
  writeFile(logFile,
            "[2026-01-02 03:04:05.678] first\n[2026-01-02 03:04:06.000] second\n\x1B[2Jmore\n");
  EXPECT_EQ(run({"log"}).out,
            "2026-01-02 03:04:05.678 first\n2026-01-02 03:04:06.000 second\n\t\\x1b[2Jmore\n");
  const Object answer = json({"log", "-n", "2"});
  EXPECT_EQ(textAt(answer, "source"), "file");
  EXPECT_EQ(textAt(answer, "path"), logFile);
  const auto& records = *answer.at("records").get<PropertyList::Array>();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(textAt(*records[0].get<Object>(), "time"), "2026-01-02 03:04:06.000");
  EXPECT_EQ(textAt(*records[1].get<Object>(), "message"), "\x1B[2Jmore");
  ChildProcess follower({program(), "log", "-f"});
  ASSERT_TRUE(follower.waitForOut("second\n"));
  std::ofstream(logFile, std::ios::app) << "[2026-01-02 03:04:07.000] third\n";
  EXPECT_TRUE(follower.waitForOut("2026-01-02 03:04:07.000 third\n"));
}

TEST_F(ToolLog, JournalIsAskedFirst) {
  writeFile(logFile, "[2026-01-02 03:04:05.678] not this\n");
  files.program("bin/journalctl",
                "printf '%s\\n' \"$*\" >\"$HOME/asked\"\n"
                R"(printf '%s\n' '{"MESSAGE":"one\u001b[2J\ntwo","_PID":"42",)"
                R"("__REALTIME_TIMESTAMP":"1767323045678901"}')"
                "\n"
                R"(printf '%s\n' '{"MESSAGE":[118,255],"_PID":"42"}')"
                "\n");
  const ChildProcess::Environment changes{
      {"PATH", (agent.home().root() / "bin").string() + ":/usr/bin:/bin"}, {"TZ", "UTC"}};
  const ProgramRun text = runProgram({kFakeJournal, program(), "log", "-n", "7"}, changes);
  if (text.status == kNotPermitted) {
    GTEST_SKIP() << "No journal of our own here: " << text.err;
  }
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_EQ(text.out,
            "2026-01-02 03:04:05.678 vendril[42] one\\x1b[2J\n\ttwo\n vendril[42] v\\xff\n");
  EXPECT_EQ(readFile(agent.home().home() / "asked"),
            "--quiet --no-pager --output=json --identifier=vendril _UID=" +
                std::to_string(::getuid()) + " --lines=7\n");
  const Object answer =
      parseJsonObject(runProgram({kFakeJournal, program(), "log", "--json"}, changes).out);
  EXPECT_EQ(textAt(answer, "source"), "journal");
  EXPECT_EQ(answer.at("records").get<PropertyList::Array>()->size(), 2U);
  const ProgramRun status = runProgram({kFakeJournal, program(), "status"}, changes);
  EXPECT_THAT(status.out, HasSubstr("ok journal available: "));
}

}  // namespace
}  // namespace vendril
