// The system log as its readers see it: on standard error and in the journal.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/PrivateHome.h"
#include "support/UniqueFd.h"

namespace vendril {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kLogProgram = VENDRIL_BUILD_DIR "/tests/test_log";
constexpr const char* kFakeJournal = VENDRIL_BUILD_DIR "/tests/fake_journal";
constexpr int kNotPermitted = 77;

TEST(StandardErrorLog, RecordIsTimeNameProcessAndMessage) {
  ChildProcess program({kLogProgram, "[Class] a message"});
  ASSERT_EQ(program.waitForExit(), 0);
  const std::regex record("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} vendril\\[" +
                          std::to_string(program.pid()) + "\\] \\[Class\\] a message\\n");
  EXPECT_TRUE(std::regex_match(program.err(), record)) << program.err();
}

TEST(StandardErrorLog, NoMessageCanPassForTwo) {
  ChildProcess program({kLogProgram, "a\n2026-01-01 00:00:00.000 vendril[1] forged\r\x1B[2K", "b"});
  ASSERT_EQ(program.waitForExit(), 0);
  EXPECT_THAT(program.err(),
              HasSubstr("] a\n\t2026-01-01 00:00:00.000 vendril[1] forged\\x0d\\x1b[2K\n"));
  EXPECT_EQ(std::count(program.err().begin(), program.err().end(), '\n'), 3) << program.err();
}

TEST(StandardErrorLog, ClosedStandardErrorIsNoTrouble) {
  ChildProcess program({"sh", "-c", "exec \"$0\" message 2>&-", kLogProgram});
  EXPECT_EQ(program.waitForExit(), 0);
}

TEST(StandardErrorLog, ReaderThatReadsNothingDoesNotStopTheWriter) {
  const PrivateHome home;
  const std::string fifo = (home.root() / "fifo").string();
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const UniqueFd reader(::open(fifo.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  std::vector<std::string> command{"sh", "-c", "exec \"$@\" 2>\"$0\"", fifo, kLogProgram};
  command.insert(command.end(), 200, std::string(1000, 'x'));
  ChildProcess program(command);
  EXPECT_EQ(program.waitForExit(), 0);
  std::array<char, 65536> buffer{};
  const ssize_t count = ::read(reader.get(), buffer.data(), buffer.size());
  ASSERT_GT(count, 0);
  EXPECT_EQ(buffer[static_cast<std::size_t>(count) - 1], '\n') << "a record is cut";
}

class JournalTest : public testing::Test {
 protected:
  /// Runs `command` where a journal seems to be.
  void run(std::vector<std::string> command) {
    command.insert(command.begin(), kFakeJournal);
    program_.emplace(std::move(command));
    const std::optional<int> status = program_->waitForExit();
    if (status == kNotPermitted) {
      GTEST_SKIP() << "No journal of our own here: " << program_->err();
    }
    ASSERT_EQ(status, 0) << program_->err();
  }

  std::optional<ChildProcess> program_;
};

TEST_F(JournalTest, EachMessageIsOneRecordWithNameAndPriority) {
  run({kLogProgram, "first", "second\nline"});
  if (IsSkipped()) {
    return;
  }
  const std::string& records = program_->out();
  EXPECT_THAT(records, HasSubstr("SYSLOG_IDENTIFIER=vendril\n"));
  EXPECT_THAT(records, HasSubstr("PRIORITY=6\n"));
  const std::string lengthOfFirst("\x05\0\0\0\0\0\0\0", 8);
  const std::string lengthOfSecond("\x0B\0\0\0\0\0\0\0", 8);
  EXPECT_THAT(records, HasSubstr("MESSAGE\n" + lengthOfFirst + "first\n"));
  EXPECT_THAT(records, HasSubstr("MESSAGE\n" + lengthOfSecond + "second\nline\n"));
}

TEST_F(JournalTest, JournalThatReadsNothingDoesNotStopTheWriter) {
  constexpr std::ptrdiff_t kMessages = 500;
  std::vector<std::string> command{kLogProgram};
  command.insert(command.end(), kMessages, "a message");
  run(command);
  if (IsSkipped()) {
    return;
  }
  EXPECT_THAT(program_->out(), HasSubstr("a message\n"));
  EXPECT_EQ(std::count(program_->err().begin(), program_->err().end(), '\n'), kMessages);
}

TEST_F(JournalTest, StandardErrorGetsItsRecordToo) {
  run({kLogProgram, "both"});
  if (IsSkipped()) {
    return;
  }
  EXPECT_THAT(program_->out(), HasSubstr("both\n"));
  EXPECT_THAT(program_->err(), HasSubstr("] both\n"));
}

TEST_F(JournalTest, StandardErrorThatLeadsToTheJournalGetsNoRecord) {
  run({"--stderr", kLogProgram, "once"});
  if (IsSkipped()) {
    return;
  }
  EXPECT_THAT(program_->out(), HasSubstr("once\n"));
  EXPECT_THAT(program_->out(), Not(HasSubstr("] once")));
  EXPECT_THAT(program_->err(), IsEmpty());
}

}  // namespace
}  // namespace vendril
