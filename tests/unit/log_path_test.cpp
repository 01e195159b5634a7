#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "logging/ZQN5SimpleLogger.h"
#include "support/FakeHost.h"
#include "support/TemporaryDirectory.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t kMaxSize = 4194304;

class LogPath : public testing::Test {
 protected:
  using Text = std::optional<std::string>;

  Text logPath(const Text& folder, const Text& file, bool create = true) {
    return ZQN5SimpleLogger::logPath(folder, file, kMaxSize, create);
  }

  /// A file of `size` bytes, all of them a hole.
  std::string writeFileOfSize(const std::string& name, std::uint64_t size) {
    const std::string path = directory.write(name, "");
    std::filesystem::resize_file(path, size);
    return path;
  }

  std::vector<std::string> logged() { return fake.fakeSystemLog.take(); }

  FakeHost fake;
  TemporaryDirectory directory;
};

TEST_F(LogPath, NeedsADirectoryAndAFileName) {
  for (const bool create : {false, true}) {
    EXPECT_EQ(logPath(std::nullopt, "log", create), std::nullopt);
    EXPECT_EQ(logPath("", "log", create), std::nullopt);
    EXPECT_EQ(logPath(directory.path(), std::nullopt, create), std::nullopt);
    EXPECT_EQ(logPath(directory.path(), "", create), std::nullopt);
    EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Invalid arguments",
                                      "Failed to create log path: Invalid arguments",
                                      "Failed to create log path: Invalid arguments",
                                      "Failed to create log path: Invalid arguments"));
  }
}

TEST_F(LogPath, WithoutCreatingOnlyJoinsDirectoryAndName) {
  EXPECT_EQ(logPath(directory / "missing", "Vendril.log", false),
            directory / "missing/Vendril.log");
  EXPECT_FALSE(std::filesystem::exists(directory / "missing"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(LogPath, JoinsWithOneSlash) {
  EXPECT_EQ(logPath("/a/b//", "c", false), "/a/b/c");
  EXPECT_EQ(logPath("/", "c", false), "/c");
  EXPECT_EQ(logPath("a", "/c", false), "a/c");
}

TEST_F(LogPath, CreatesAMissingDirectoryWithAllAboveIt) {
  EXPECT_EQ(logPath(directory / "one/two", "log"), directory / "one/two/log");
  EXPECT_TRUE(std::filesystem::is_directory(directory / "one/two"));
  EXPECT_FALSE(std::filesystem::exists(directory / "one/two/log"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(LogPath, ANewDirectoryIsAsOpenAsTheCreationMaskLetsIt) {
  const mode_t mask = umask(022);
  logPath(directory / "new", "log");
  umask(mask);
  EXPECT_EQ(std::filesystem::status(directory / "new").permissions(), std::filesystem::perms{0755});
}

TEST_F(LogPath, ADirectoryThatCannotBeCreatedYieldsNothing) {
  directory.write("file", "");
  EXPECT_EQ(logPath(directory / "file/logs", "log"), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Cannot create directory '" +
                                    directory / "file/logs" + "' - Not a directory"));
}

TEST_F(LogPath, ALinkToNowhereInPlaceOfTheDirectoryYieldsNothing) {
  std::filesystem::create_symlink(directory / "nowhere", directory / "logs");
  EXPECT_EQ(logPath(directory / "logs", "log"), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Cannot create directory '" +
                                    directory / "logs" + "' - File exists"));
}

TEST_F(LogPath, ADirectoryNameWithANulByteYieldsNothing) {
  const std::string name = directory / std::string("a\0b", 3);
  EXPECT_EQ(logPath(name, "log"), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Cannot create directory '" + name +
                                    "' - Invalid argument"));
  EXPECT_FALSE(std::filesystem::exists(directory / "a"));
}

TEST_F(LogPath, AFileInPlaceOfTheDirectoryYieldsNothing) {
  directory.write("logs", "");
  EXPECT_EQ(logPath(directory / "logs", "log"), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Cannot create directory '" +
                                    directory / "logs" +
                                    "' - Expected a folder to store application logs, found a "
                                    "file"));
}

TEST_F(LogPath, ADirectoryInPlaceOfTheLogFileYieldsNothing) {
  std::filesystem::create_directory(directory / "log");
  EXPECT_EQ(logPath(directory.path(), "log"), std::nullopt);
  EXPECT_THAT(logged(),
              ElementsAre("Failed to create log path: Cannot create log file '" +
                          directory / "log" + "' - Expected a old log file, found a directory"));
}

TEST_F(LogPath, AnOldFileAboveTheLimitIsRemoved) {
  const std::string path = writeFileOfSize("log", 4194305);
  EXPECT_EQ(logPath(directory.path(), "log"), path);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(LogPath, AnOldFileOfExactlyTheLimitIsKept) {
  const std::string path = writeFileOfSize("log", 4194304);
  EXPECT_EQ(logPath(directory.path(), "log"), path);
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(LogPath, WithoutCreatingALargeFileIsKept) {
  const std::string path = writeFileOfSize("log", 4194305);
  EXPECT_EQ(logPath(directory.path(), "log", false), path);
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(LogPath, ASizeThatCannotBeReadCountsAsZero) {
  const std::string path = directory / "log";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(ZQN5SimpleLogger::logPath(directory.path(), "log", 0, true), path);
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(LogPath, AnOldFileThatCannotBeRemovedYieldsNothing) {
  // Nobody can delete an entry of /proc; the reason depends on who tries.
  ASSERT_NE(unlink("/proc/self/exe"), 0);
  const std::string reason = std::generic_category().message(errno);
  EXPECT_EQ(ZQN5SimpleLogger::logPath("/proc/self", "exe", 1, true), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create log path: Cannot remove old log file "
                                    "'/proc/self/exe' - " +
                                    reason));
}

}  // namespace
}  // namespace vendril
