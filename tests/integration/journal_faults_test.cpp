// A journal that is absent, stopped, full or started anew: none of it stops who writes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/freedesktop/JournalSocket.h"
#include "support/JournalReader.h"
#include "support/MainLoop.h"
#include "support/TemporaryDirectory.h"

namespace vendril {
namespace {

constexpr const char* kFields = "PRIORITY=6\nSYSLOG_IDENTIFIER=test\n";
/// Far more records than any system lets wait in a socket.
constexpr int kFlood = 2000;

/// The record of a message that is shorter than 256 bytes.
std::string recordOf(const std::string& message) {
  const std::string length{static_cast<char>(message.size()), 0, 0, 0, 0, 0, 0, 0};
  return kFields + ("MESSAGE\n" + length) + message + "\n";
}

class JournalFaults : public testing::Test {
 protected:
  JournalFaults() { journal_.emplace(path_); }

  /// Writes more records than a journal that reads nothing can take; false when the writer is still
  /// at it at the deadline.
  bool floods(JournalSocket& socket) {
    std::future<void> done = std::async(std::launch::async, [&socket] {
      for (int i = 0; i < kFlood; ++i) {
        socket.write("flood");
      }
    });
    const bool inTime = done.wait_for(kTestDeadline) == std::future_status::ready;
    if (!inTime) {
      journal_.reset();  // A writer that waits for it is freed.
    }
    return inTime;
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_ / "journal";
  std::optional<JournalReader> journal_;
};

TEST_F(JournalFaults, RecordIsItsFieldsAndItsMessageByteForByte) {
  JournalSocket socket(kFields, path_);
  ASSERT_TRUE(socket.isPresent());
  for (const std::string& message :
       {std::string("plain"), std::string("a\nb\0c\xFF", 6), std::string()}) {
    socket.write(message);
    EXPECT_EQ(journal_->read(), recordOf(message));
  }
}

TEST_F(JournalFaults, RecordThatFitsIntoNoDatagramArrivesAsASealedFile) {
  JournalSocket socket(kFields, path_);
  const std::string message(3'000'000, 'x');
  socket.write(message);
  const std::string record = journal_->read().value_or("nothing");
  ASSERT_GT(record.size(), message.size()) << record.substr(0, 100);
  EXPECT_TRUE(record.ends_with(message + "\n"));
  EXPECT_TRUE(record.starts_with(kFields + std::string("MESSAGE\n")));
}

TEST_F(JournalFaults, AbsentJournalIsFoundAbsent) {
  journal_.reset();
  EXPECT_FALSE(JournalSocket(kFields, path_).isPresent());
}

TEST_F(JournalFaults, JournalThatTakesNothingStopsNobodyAndGetsWhatComesLater) {
  JournalSocket socket(kFields, path_);
  ASSERT_TRUE(floods(socket));
  const std::size_t taken = journal_->readAll();
  EXPECT_GT(taken, 0U);
  EXPECT_LT(taken, std::size_t{kFlood}) << "the journal was never full";
  socket.write("later");
  EXPECT_EQ(journal_->read(), recordOf("later"));
}

TEST_F(JournalFaults, JournalThatIsSlowLosesNothing) {
  JournalSocket socket(kFields, path_);
  std::size_t taken = 0;
  std::jthread writer([&socket] {
    for (int i = 0; i < kFlood; ++i) {
      socket.write("flood");
    }
    socket.write("the end");
  });
  bool ended = false;
  EXPECT_TRUE(runMainLoopUntil([&] {
    while (const auto record = journal_->read()) {
      ++taken;
      ended = record == recordOf("the end");
    }
    return ended;
  }));
  EXPECT_EQ(taken, std::size_t{kFlood} + 1);
}

TEST_F(JournalFaults, JournalThatHasGoneStopsNobody) {
  JournalSocket socket(kFields, path_);
  socket.write("before");
  journal_.reset();
  ASSERT_TRUE(floods(socket));
}

TEST_F(JournalFaults, JournalThatIsStartedAnewGetsTheNextRecord) {
  JournalSocket socket(kFields, path_);
  for (int round = 0; round < 3; ++round) {
    journal_.reset();
    socket.write("lost");
    journal_.emplace(path_);
    socket.write("found");
    EXPECT_EQ(journal_->read(), recordOf("found")) << round;
  }
}

TEST_F(JournalFaults, JournalThatWasDownAtTheStartGetsRecordsOnceItIsUp) {
  // What a crash leaves behind: a socket that nobody listens at.
  const std::string aside = directory_ / "aside";
  ASSERT_EQ(::link(path_.c_str(), aside.c_str()), 0);
  journal_.reset();
  ASSERT_EQ(::rename(aside.c_str(), path_.c_str()), 0);
  JournalSocket socket(kFields, path_);
  ASSERT_TRUE(socket.isPresent());
  socket.write("lost");
  ASSERT_EQ(::unlink(path_.c_str()), 0);
  journal_.emplace(path_);
  socket.write("found");
  EXPECT_EQ(journal_->read(), recordOf("found"));
}

// On a busy machine the reader may come too late for some of them; none comes in pieces.
TEST_F(JournalFaults, RecordsOfManyThreadsStayWhole) {
  constexpr int kThreads = 4;
  constexpr int kRecords = 500;
  JournalSocket socket(kFields, path_);
  std::atomic<int> atWork = kThreads;
  std::vector<std::jthread> writers;
  for (int i = 0; i < kThreads; ++i) {
    writers.emplace_back([&socket, &atWork] {
      for (int j = 0; j < kRecords; ++j) {
        socket.write("one of many");
      }
      --atWork;
    });
  }
  int whole = 0;
  EXPECT_TRUE(runMainLoopUntil([&] {
    const bool isLastLook = atWork == 0;
    while (const auto record = journal_->read()) {
      EXPECT_EQ(record, recordOf("one of many"));
      ++whole;
    }
    return isLastLook;
  }));
  EXPECT_GT(whole, 0);
  EXPECT_LE(whole, kThreads * kRecords);
}

}  // namespace
}  // namespace vendril
