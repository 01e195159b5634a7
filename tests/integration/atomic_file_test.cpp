#include "platform/freedesktop/AtomicFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "platform/freedesktop/BoundedFile.h"
#include "support/PlistTestDirectory.h"

namespace vendril::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

mode_t modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & ACCESSPERMS;
}

/// Lets no file grow beyond `size` bytes, as a full disk does.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{size, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }

 private:
  rlimit old_{};
  void (*oldHandler_)(int);
};

class Umask {
 public:
  explicit Umask(mode_t mask) : old_(umask(mask)) {}
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;
  ~Umask() { umask(old_); }

 private:
  mode_t old_;
};

class AtomicFile : public testing::Test {
 protected:
  PlistTestDirectory directory_;
  const std::string path_ = directory_.file("file");
};

TEST_F(AtomicFile, CreatesAFileAndNothingBesideIt) {
  EXPECT_FALSE(replaceFile(path_, "new"));
  EXPECT_EQ(readBytes(path_), "new");
  EXPECT_THAT(directory_.names(), ElementsAre("file"));
}

TEST_F(AtomicFile, ReplacesAFileAndNeverWritesIntoIt) {
  writeBytes(path_, "old");
  const std::string other = directory_.file("other");
  fs::create_hard_link(path_, other);
  EXPECT_FALSE(replaceFile(path_, std::string("n\0w", 3)));
  EXPECT_EQ(readBytes(path_), std::string("n\0w", 3));
  EXPECT_EQ(readBytes(other), "old");
  EXPECT_THAT(directory_.names(), ElementsAre("file", "other"));
}

TEST_F(AtomicFile, KeepsThePermissionsOfTheOldFile) {
  const Umask umask(022);
  writeBytes(path_, "old");
  for (const mode_t mode : {0600U, 0444U, 0666U}) {
    chmod(path_.c_str(), mode);
    EXPECT_FALSE(replaceFile(path_, "new"));
    EXPECT_EQ(modeOf(path_), mode);
  }
}

TEST_F(AtomicFile, GivesANewFileThePermissionsThatTheUmaskAllows) {
  for (const mode_t mask : {022U, 077U}) {
    const Umask umask(mask);
    fs::remove(path_);
    EXPECT_FALSE(replaceFile(path_, "new"));
    EXPECT_EQ(modeOf(path_), 0666U & ~mask);
  }
}

TEST_F(AtomicFile, WritesThroughLinksAndKeepsThem) {
  fs::create_directory(directory_.file("real"));
  const std::string target = directory_.file("real/target");
  writeBytes(target, "old");
  fs::create_symlink("real/target", directory_.file("relative"));
  fs::create_symlink(directory_.file("relative"), path_);
  EXPECT_FALSE(replaceFile(path_, "new"));
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_TRUE(fs::is_symlink(directory_.file("relative")));
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_EQ(readBytes(target), "new");
  EXPECT_THAT(directory_.names(), ElementsAre("file", "real", "relative"));
}

TEST_F(AtomicFile, CreatesTheTargetOfADanglingLink) {
  fs::create_symlink("target", path_);
  EXPECT_FALSE(replaceFile(path_, "new"));
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(readBytes(directory_.file("target")), "new");
}

TEST_F(AtomicFile, FailsOnALinkToItself) {
  fs::create_symlink("file", path_);
  EXPECT_EQ(replaceFile(path_, "new"), std::errc::too_many_symbolic_link_levels);
  EXPECT_TRUE(fs::is_symlink(path_));
}

TEST_F(AtomicFile, RefusesWhatIsNotARegularFile) {
  fs::create_directory(path_);
  EXPECT_EQ(replaceFile(path_, "new"), std::errc::is_a_directory);
  const std::string fifo = directory_.file("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(replaceFile(fifo, "new"), std::errc::operation_not_supported);
  EXPECT_TRUE(fs::is_fifo(fifo));
  const std::string device = directory_.file("device");
  fs::create_symlink("/dev/null", device);
  EXPECT_EQ(replaceFile(device, "new"), std::errc::operation_not_supported);
  EXPECT_THAT(directory_.names(), ElementsAre("device", "fifo", "file"));
}

TEST_F(AtomicFile, FailsWithoutItsDirectory) {
  EXPECT_EQ(replaceFile(directory_.file("missing/file"), "new"),
            std::errc::no_such_file_or_directory);
  EXPECT_THAT(directory_.names(), IsEmpty());
}

TEST_F(AtomicFile, KeepsTheOldFileAndLeavesNothingBehindWhenTheDiskIsFull) {
  writeBytes(path_, "old");
  {
    const FileSizeLimit limit(4096);
    EXPECT_EQ(replaceFile(path_, std::string(10'000, 'x')), std::errc::file_too_large);
  }
  EXPECT_EQ(readBytes(path_), "old");
  EXPECT_THAT(directory_.names(), ElementsAre("file"));
}

TEST_F(AtomicFile, TakesTheCurrentDirectoryForAPathWithoutOne) {
  const fs::path old = fs::current_path();
  fs::current_path(directory_.path());
  EXPECT_FALSE(replaceFile("file", "new"));
  fs::current_path(old);
  EXPECT_EQ(readBytes(path_), "new");
}

class BoundedFile : public AtomicFile {};

TEST_F(BoundedFile, ReadsUpToItsLimitAndNoLongerFile) {
  writeBytes(path_, std::string(20'000, 'x'));
  EXPECT_EQ(readBoundedFile(path_, 20'000), std::string(20'000, 'x'));
  EXPECT_EQ(readBoundedFile(path_, 19'999), std::nullopt);
  writeBytes(path_, "");
  EXPECT_EQ(readBoundedFile(path_, 0), "");
}

TEST_F(BoundedFile, BoundsFilesThatDoNotTellTheirSize) {
  ASSERT_EQ(fs::file_size("/proc/self/maps"), 0U);
  EXPECT_EQ(readBoundedFile("/proc/self/maps", 100), std::nullopt);
  EXPECT_NE(readBoundedFile("/proc/self/maps", std::size_t{1} << 24U).value_or(""), "");
}

TEST_F(BoundedFile, ReadsNothingWhereNothingIsToBeRead) {
  EXPECT_EQ(readBoundedFile(directory_.file("missing"), 100), std::nullopt);
  EXPECT_EQ(readBoundedFile(directory_.path(), 100), std::nullopt);
  EXPECT_EQ(readBoundedFile("", 100), std::nullopt);
  EXPECT_EQ(readBoundedFile("/dev/null", 100), std::nullopt);
  // A regular file whose first byte cannot be read.
  EXPECT_EQ(readBoundedFile("/proc/self/mem", 100), std::nullopt);
}

TEST_F(BoundedFile, DoesNotWaitForTheOtherEndOfAFifo) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(readBoundedFile(path_, 100), std::nullopt);
}

}  // namespace
}  // namespace vendril::test
