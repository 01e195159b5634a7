#include "platform/freedesktop/UnblockedOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "support/UniqueFd.h"

namespace vendril {
namespace {

struct Ends {
  UniqueFd read;
  UniqueFd write;
};

Ends makePipe() {
  std::array<int, 2> fds{};
  EXPECT_EQ(::pipe2(fds.data(), O_CLOEXEC), 0);
  return {UniqueFd(fds[0]), UniqueFd(fds[1])};
}

Ends makeSocketPair() {
  std::array<int, 2> fds{};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds.data()), 0);
  return {UniqueFd(fds[0]), UniqueFd(fds[1])};
}

/// Takes out all that is there to be read.
std::string drain(const UniqueFd& fd) {
  ::fcntl(fd.get(), F_SETFL, O_NONBLOCK);
  std::array<char, 65536> buffer{};
  std::string text;
  ssize_t count = 0;
  while ((count = ::read(fd.get(), buffer.data(), buffer.size())) > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

/// Lets no descriptor be opened while it lives.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{0, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;
  ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

class UnblockedOutputTest : public testing::TestWithParam<Ends (*)()> {};

TEST_P(UnblockedOutputTest, WritesRecordsInTheirOrder) {
  const Ends ends = GetParam()();
  UnblockedOutput output(ends.write.get());
  output.write("one\n");
  output.write("two\n");
  EXPECT_EQ(drain(ends.read), "one\ntwo\n");
}

TEST_P(UnblockedOutputTest, GivesUpAFullOutputAndWaitsForItsReaderOnlyOnce) {
  const Ends ends = GetParam()();
  UnblockedOutput output(ends.write.get());
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 10'000; ++i) {
    output.write(std::string(999, 'x') + "\n");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_GE(drain(ends.read).size(), 1000U);
}

TEST_P(UnblockedOutputTest, StartsANewLineAfterARecordThatFoundNoRoom) {
  const Ends ends = GetParam()();
  UnblockedOutput output(ends.write.get());
  output.write(std::string(4'000'000, 'x') + "\n");
  const std::string cut = drain(ends.read);
  ASSERT_LT(cut.size(), 4'000'000U);
  output.write("next\n");
  EXPECT_EQ(drain(ends.read), "\nnext\n");
}

TEST_P(UnblockedOutputTest, LeavesTheSharedFlagsAlone) {
  const Ends ends = GetParam()();
  const int before = ::fcntl(ends.write.get(), F_GETFL);
  UnblockedOutput output(ends.write.get());
  output.write("x");
  EXPECT_EQ(::fcntl(ends.write.get(), F_GETFL), before);
}

TEST_P(UnblockedOutputTest, ReaderThatHasGoneIsNoTrouble) {
  std::signal(SIGPIPE, SIG_IGN);
  Ends ends = GetParam()();
  UnblockedOutput output(ends.write.get());
  ends.read.reset();
  output.write("x");
  std::signal(SIGPIPE, SIG_DFL);
}

TEST(UnblockedOutputThatCannotBeReopened, WritesRecordsInTheirOrder) {
  const Ends ends = makePipe();
  std::optional<UnblockedOutput> output;
  {
    const NoMoreDescriptors none;
    output.emplace(ends.write.get());
  }
  output->write("one\n");
  output->write(std::string(10'000, 'x') + "\n");
  EXPECT_EQ(drain(ends.read), "one\n" + std::string(10'000, 'x') + "\n");
}

TEST(UnblockedOutputThatCannotBeReopened, NeverBlocksOnALargeRecordThatNobodyReads) {
  const Ends ends = makePipe();
  std::optional<UnblockedOutput> output;
  {
    const NoMoreDescriptors none;
    output.emplace(ends.write.get());
  }
  output->write(std::string(1'000'000, 'x') + "\n");
  const std::string cut = drain(ends.read);
  EXPECT_GT(cut.size(), 0U);
  EXPECT_LT(cut.size(), 1'000'000U);
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnblockedOutputTest, testing::Values(makePipe, makeSocketPair));

TEST(UnblockedOutputFile, AppendsWhereTheSharedDescriptorStands) {
  const UniqueFd file(::open("/tmp", O_RDWR | O_TMPFILE | O_CLOEXEC, 0600));
  ASSERT_TRUE(file);
  ASSERT_EQ(::write(file.get(), "before ", 7), 7);
  UnblockedOutput output(file.get());
  output.write("record ");
  ASSERT_EQ(::write(file.get(), "after", 5), 5);
  ASSERT_EQ(::lseek(file.get(), 0, SEEK_SET), 0);
  EXPECT_EQ(drain(file), "before record after");
}

TEST(UnblockedOutputFile, WritesNothingToADescriptorThatWasNotOpen) {
  Ends ends = makePipe();
  const int number = ends.write.get();
  ends.write.reset();
  UnblockedOutput output(number);
  const UniqueFd later(::fcntl(ends.read.get(), F_DUPFD_CLOEXEC, number));
  output.write("x");
  EXPECT_EQ(drain(ends.read), "");
}

}  // namespace
}  // namespace vendril
