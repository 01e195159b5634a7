#include <gmock/gmock.h>

#include <atomic>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "support/SimpleLoggerTest.h"

namespace vendril {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// Threads that log without a pause until they are stopped.
class BusyWriters {
 public:
  static constexpr int kCount = 8;

  explicit BusyWriters(ZQN5SimpleLogger& logger) {
    for (int number = 0; number < kCount; ++number) {
      threads_.emplace_back([this, &logger, number] { run(logger, number); });
    }
  }

  int written() const { return written_; }

  /// Returns when `lines` more lines have been written.
  void waitForLines(int lines) const {
    for (const int goal = written_ + lines; written_ < goal;) {
      std::this_thread::yield();
    }
  }

  void stop() {
    stopped_ = true;
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

 private:
  void run(ZQN5SimpleLogger& logger, int number) {
    for (int line = 0; !stopped_; ++line) {
      logger.log("thread %d line %d of a text that is longer than a word", number, line);
      ++written_;
    }
  }

  std::atomic<bool> stopped_ = false;
  std::atomic<int> written_ = 0;
  std::vector<std::thread> threads_;
};

/// The messages of the lines in a file; a line without its time stamp counts as the message "".
std::vector<std::string> messagesIn(const std::string& contents) {
  constexpr std::string_view kTimeStamp = "[2024-01-31 13:05:09.042] ";
  std::vector<std::string> messages;
  std::istringstream file(contents);
  for (std::string line; std::getline(file, line);) {
    messages.push_back(line.starts_with(kTimeStamp) ? line.substr(kTimeStamp.size()) : "");
  }
  return messages;
}

TEST_F(SimpleLoggerWithFile, EightThreadsLogWholeLinesWhileTheLogIsRedirected) {
  constexpr int kRedirections = 100;
  const std::vector<std::string> names{"a", "b", "c"};
  ZQN5SimpleLogger logger;
  BusyWriters writers(logger);
  for (int i = 0; i < kRedirections; ++i) {
    logger.setPath(directory / names[static_cast<std::size_t>(i) % names.size()]);
    writers.waitForLines(BusyWriters::kCount);
  }
  logger.setPath(std::nullopt);
  writers.stop();

  const std::vector<std::string> all = fake.fakeSystemLog.messages();
  EXPECT_THAT(all, SizeIs(static_cast<std::size_t>(writers.written() + kRedirections + 1)));
  // Each line of a file is one message that was logged, and no message stands in a file twice.
  std::multiset<std::string> missing(all.begin(), all.end());
  std::size_t lines = 0;
  for (const std::string& name : names) {
    EXPECT_THAT(descriptorsOf(directory / name), IsEmpty());
    for (const std::string& message : messagesIn(directory.read(name))) {
      const auto entry = missing.find(message);
      ASSERT_NE(entry, missing.end()) << "'" << message << "' in " << name;
      missing.erase(entry);
      ++lines;
    }
  }
  EXPECT_GT(lines, static_cast<std::size_t>(kRedirections));
}

}  // namespace
}  // namespace vendril
