#include "logging/ZQN5SimpleLogger.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "support/SimpleLoggerTest.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::NotNull;
using testing::SizeIs;

TEST_F(SimpleLogger, WithoutAFileEveryMessageReachesTheSystemLogWithNoTimeStamp) {
  ZQN5SimpleLogger logger;
  logger.log("Hello %@", "world");
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre("Hello world"));
}

TEST_F(SimpleLogger, InitLogsNothing) {
  const ZQN5SimpleLogger logger;
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
  EXPECT_EQ(logger.path(), std::nullopt);
  EXPECT_THAT(logger.fileDescriptor(), IsNull());
  EXPECT_EQ(logger.dateFormatter().pattern(), "yyyy-MM-dd HH:mm:ss.SSS");
}

TEST_F(SimpleLogger, WithoutAFileNullAndEmptyPathsAreNoChange) {
  ZQN5SimpleLogger logger;
  logger.setPath(std::nullopt);
  logger.setPath("");
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
  EXPECT_EQ(logger.path(), std::nullopt);
}

TEST_F(SimpleLogger, FlushWithoutAFileDoesNothing) {
  ZQN5SimpleLogger logger;
  logger.flush();
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
}

TEST_F(SimpleLoggerWithFile, NullFormatWritesNothingAnywhere) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  logger.log(nullptr);
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
  EXPECT_EQ(directory.read("log"), "");
}

TEST_F(SimpleLoggerWithFile, FileLineIsTheTimeStampInBracketsAndTheMessage) {
  ZQN5SimpleLogger logger(directory / "log");
  logger.log("Hello %@", "world");
  EXPECT_EQ(directory.read("log"), "[2024-01-31 13:05:09.042] Hello world\n");
}

TEST_F(SimpleLoggerWithFile, TimeStampIsLocalTime) {
  const ScopedTimeZone eastern("EAST-02:30");
  ZQN5SimpleLogger logger(directory / "log");
  logger.log("Hello");
  EXPECT_EQ(directory.read("log"), "[2024-01-31 15:35:09.042] Hello\n");
}

TEST_F(SimpleLoggerWithFile, TimeStampFollowsTheDateFormatter) {
  ZQN5SimpleLogger logger(directory / "log");
  logger.setDateFormatter(DateFormatter("HH.mm"));
  logger.log("Hello");
  EXPECT_EQ(directory.read("log"), "[13.05] Hello\n");
}

TEST_F(SimpleLoggerWithFile, EveryMessageReachesTheSystemLogToo) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  logger.log("Hello");
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre("Hello"));
}

TEST_F(SimpleLoggerWithFile, LineFeedsInAMessageAreWrittenAsTheyAre) {
  ZQN5SimpleLogger logger(directory / "log");
  logger.log("a\nb\n%@", "100% caf\xC3\xA9");
  EXPECT_EQ(directory.read("log"), "[2024-01-31 13:05:09.042] a\nb\n100% caf\xC3\xA9\n");
}

TEST_F(SimpleLoggerWithFile, FileLineEndsWhereTheMessageHoldsANul) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  const std::string message("a\0b", 3);
  logger.log("%@", message);
  logger.log("next");
  EXPECT_EQ(directory.read("log"), "[2024-01-31 13:05:09.042] a\n[2024-01-31 13:05:09.042] next\n");
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre(message, "next"));
}

TEST_F(SimpleLoggerWithFile, FirstRedirectionReachesTheSystemLogOnly) {
  const ZQN5SimpleLogger logger(directory / "log");
  EXPECT_THAT(
      fake.fakeSystemLog.take(),
      ElementsAre("[ZQN5SimpleLogger] Redirecting log file to: '" + directory / "log" + "'"));
  EXPECT_EQ(directory.read("log"), "");
  EXPECT_EQ(logger.path(), directory / "log");
  EXPECT_THAT(logger.fileDescriptor(), NotNull());
}

TEST_F(SimpleLoggerWithFile, SettingTheCurrentPathDoesNothingAndLogsNothing) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  std::FILE* const stream = logger.fileDescriptor();
  logger.setPath(directory / "log");
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
  EXPECT_EQ(logger.fileDescriptor(), stream);
}

TEST_F(SimpleLoggerWithFile, NullPathLogsItsRemovalIntoTheFileAndClosesIt) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  logger.setPath(std::nullopt);
  EXPECT_THAT(descriptorsOf(directory / "log"), IsEmpty());
  EXPECT_THAT(logger.fileDescriptor(), IsNull());
  EXPECT_EQ(logger.path(), std::nullopt);
  logger.log("afterwards");
  EXPECT_THAT(fake.fakeSystemLog.take(),
              ElementsAre("[ZQN5SimpleLogger] Removing log file", "afterwards"));
  EXPECT_EQ(directory.read("log"),
            "[2024-01-31 13:05:09.042] [ZQN5SimpleLogger] Removing log file\n");
}

TEST_F(SimpleLoggerWithFile, EmptyPathIsStoredAsGivenSoThatANullOneIsAnotherChange) {
  ZQN5SimpleLogger logger(directory / "log");
  fake.fakeSystemLog.take();
  logger.setPath("");
  EXPECT_EQ(logger.path(), "");
  EXPECT_THAT(logger.fileDescriptor(), IsNull());
  logger.setPath(std::nullopt);
  EXPECT_EQ(logger.path(), std::nullopt);
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre("[ZQN5SimpleLogger] Removing log file",
                                                     "[ZQN5SimpleLogger] Removing log file"));
}

TEST_F(SimpleLoggerWithFile, RedirectionIsTheLastLineOfTheOldFile) {
  ZQN5SimpleLogger logger(directory / "old");
  logger.log("one");
  logger.setPath(directory / "new");
  logger.log("two");
  EXPECT_EQ(directory.read("old"),
            "[2024-01-31 13:05:09.042] one\n"
            "[2024-01-31 13:05:09.042] [ZQN5SimpleLogger] Redirecting log file to: '" +
                directory / "new" + "'\n");
  EXPECT_EQ(directory.read("new"), "[2024-01-31 13:05:09.042] two\n");
  EXPECT_THAT(descriptorsOf(directory / "old"), IsEmpty());
}

TEST_F(SimpleLoggerWithFile, PathsAreComparedCaseSensitively) {
  const ZQN5SimpleLogger logger(directory / "log");
  EXPECT_FALSE(logger.pathChanged(directory / "log"));
  EXPECT_TRUE(logger.pathChanged(directory / "LOG"));
  EXPECT_TRUE(logger.pathChanged(std::nullopt));
  EXPECT_TRUE(logger.pathChanged(std::string(256, 'x')));
}

TEST_F(SimpleLoggerWithFile, WithoutAPathALengthOf256CharactersIsNoChange) {
  ZQN5SimpleLogger logger;
  const std::string path = directory.path() + std::string(256 - directory.path().size(), '/');
  logger.setPath(path);
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
  EXPECT_EQ(logger.path(), std::nullopt);
}

TEST_F(SimpleLogger, WithoutAPathOnlyTheLowEightBitsOfTheLengthCount) {
  const ZQN5SimpleLogger logger;
  EXPECT_TRUE(logger.pathChanged(std::string(255, 'x')));
  EXPECT_FALSE(logger.pathChanged(std::string(256, 'x')));
  EXPECT_TRUE(logger.pathChanged(std::string(257, 'x')));
  EXPECT_TRUE(logger.pathChanged(std::string(384, 'x')));
  EXPECT_FALSE(logger.pathChanged(std::string(512, 'x')));
}

TEST_F(SimpleLogger, TheLengthOfAPathIsCountedInCharacters) {
  const ZQN5SimpleLogger logger;
  std::string path;
  for (int i = 0; i < 128; ++i) {
    path += "\xC3\xA9";
  }
  EXPECT_TRUE(logger.pathChanged(path));
  EXPECT_FALSE(logger.pathChanged(path + path));
}

TEST_F(SimpleLoggerWithFile, AnExistingFileIsAppendedTo) {
  directory.write("log", "earlier\n");
  ZQN5SimpleLogger logger(directory / "log");
  logger.log("now");
  EXPECT_EQ(directory.read("log"), "earlier\n[2024-01-31 13:05:09.042] now\n");
}

TEST_F(SimpleLoggerWithFile, TheLoggerClosesItsStreamWhenItGoesAway) {
  {
    const ZQN5SimpleLogger logger(directory / "log");
    EXPECT_THAT(descriptorsOf(directory / "log"), SizeIs(1));
  }
  EXPECT_THAT(descriptorsOf(directory / "log"), IsEmpty());
}

TEST_F(SimpleLogger, ANewFileIsAsOpenAsTheCreationMaskLetsIt) {
  const mode_t mask = umask(0);
  const ZQN5SimpleLogger open(directory / "open");
  umask(027);
  const ZQN5SimpleLogger closed(directory / "closed");
  umask(mask);
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(directory / "open").permissions(), perms{0666});
  EXPECT_EQ(std::filesystem::status(directory / "closed").permissions(), perms{0640});
  close(descriptorsOf(directory / "open").at(0));
  close(descriptorsOf(directory / "closed").at(0));
}

TEST_F(SimpleLogger, ARefusedStreamLeavesTheFileEmptyAndItsDescriptorOpen) {
  const std::string path = directory / "log";
  ZQN5SimpleLogger logger(path);
  logger.log("Hello");
  logger.flush();
  EXPECT_THAT(fake.fakeSystemLog.take(),
              ElementsAre("[ZQN5SimpleLogger] Redirecting log file to: '" + path + "'", "Hello"));
  EXPECT_EQ(logger.path(), path);
  EXPECT_THAT(logger.fileDescriptor(), IsNull());
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(directory.read("log"), "");
  logger.setPath(std::nullopt);
  const std::vector<int> descriptors = descriptorsOf(path);
  ASSERT_THAT(descriptors, SizeIs(1));
  EXPECT_EQ(fcntl(descriptors[0], F_GETFL) & O_ACCMODE, O_RDONLY);
  EXPECT_EQ(fcntl(descriptors[0], F_GETFD), FD_CLOEXEC);
  close(descriptors[0]);
}

TEST_F(SimpleLogger, AFailedOpenLeavesNoPathSoThatTheSameOneIsTriedAgain) {
  const std::string path = directory / "missing/log";
  const std::string redirecting = "[ZQN5SimpleLogger] Redirecting log file to: '" + path + "'";
  const std::string failed = "[ZQN5SimpleLogger] Failed to redirect log file to: '" + path +
                             "' Status code: 2 Error message: No such file or directory";
  ZQN5SimpleLogger logger(path);
  EXPECT_EQ(logger.path(), std::nullopt);
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre(redirecting, failed));
  logger.setPath(path);
  EXPECT_THAT(fake.fakeSystemLog.take(), ElementsAre(redirecting, failed));
}

TEST_F(SimpleLoggerWithFile, AFailedOpenIsNotWrittenToTheOldFile) {
  ZQN5SimpleLogger logger(directory / "old");
  logger.setPath(directory.path());
  EXPECT_EQ(directory.read("old"),
            "[2024-01-31 13:05:09.042] [ZQN5SimpleLogger] Redirecting log file to: '" +
                directory.path() + "'\n");
  EXPECT_EQ(fake.fakeSystemLog.take().back(),
            "[ZQN5SimpleLogger] Failed to redirect log file to: '" + directory.path() +
                "' Status code: 21 Error message: Is a directory");
}

TEST_F(SimpleLogger, AFifoIsRefusedInsteadOfWaitedFor) {
  const std::string path = directory / "fifo";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const ZQN5SimpleLogger logger(path);
  EXPECT_EQ(fake.fakeSystemLog.take().back(),
            "[ZQN5SimpleLogger] Failed to redirect log file to: '" + path +
                "' Status code: 22 Error message: Invalid argument");
  EXPECT_EQ(logger.path(), std::nullopt);
}

TEST_F(SimpleLogger, APathWithANulByteIsRefusedAndOpensNoShorterName) {
  const std::string path = directory / std::string("a\0b", 3);
  const ZQN5SimpleLogger logger(path);
  EXPECT_EQ(fake.fakeSystemLog.take().back(),
            "[ZQN5SimpleLogger] Failed to redirect log file to: '" + path +
                "' Status code: 22 Error message: Invalid argument");
  EXPECT_FALSE(std::filesystem::exists(directory / "a"));
}

TEST_F(SimpleLogger, ADescriptorNumberOfZeroCountsAsAFailure) {
  const std::string path = directory / "log";
  const int standardInput = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
  close(STDIN_FILENO);
  const ZQN5SimpleLogger logger(path);
  close(STDIN_FILENO);
  if (standardInput >= 0) {
    dup2(standardInput, STDIN_FILENO);
    close(standardInput);
  }
  EXPECT_EQ(fake.fakeSystemLog.take().back(),
            "[ZQN5SimpleLogger] Failed to redirect log file to: '" + path +
                "' Status code: 0 Error message: Success");
  EXPECT_EQ(logger.path(), std::nullopt);
  EXPECT_THAT(logger.fileDescriptor(), IsNull());
}

TEST_F(SimpleLogger, SettingTheStreamDoesNotCloseTheOneBefore) {
  std::FILE* const first = std::fopen((directory / "first").c_str(), "w");
  std::FILE* const second = std::fopen((directory / "second").c_str(), "w");
  {
    ZQN5SimpleLogger logger;
    logger.setFileDescriptor(first);
    logger.setFileDescriptor(second);
    EXPECT_EQ(logger.fileDescriptor(), second);
    logger.log("Hello");
  }
  EXPECT_THAT(descriptorsOf(directory / "first"), SizeIs(1));
  EXPECT_THAT(descriptorsOf(directory / "second"), IsEmpty());
  EXPECT_EQ(directory.read("second"), "[2024-01-31 13:05:09.042] Hello\n");
  std::fclose(first);
}

TEST_F(SimpleLogger, EveryLineIsFlushedEvenOnAFullyBufferedStream) {
  ZQN5SimpleLogger logger;
  logger.setFileDescriptor(std::fopen((directory / "log").c_str(), "w"));
  logger.log("Hello");
  EXPECT_EQ(directory.read("log"), "[2024-01-31 13:05:09.042] Hello\n");
}

TEST_F(SimpleLogger, FlushFlushesTheOpenStream) {
  ZQN5SimpleLogger logger;
  logger.setFileDescriptor(std::fopen((directory / "log").c_str(), "w"));
  std::fputs("waiting", logger.fileDescriptor());
  ASSERT_EQ(directory.read("log"), "");
  logger.flush();
  EXPECT_EQ(directory.read("log"), "waiting");
}

}  // namespace
}  // namespace vendril
