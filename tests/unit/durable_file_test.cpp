#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/freedesktop/AtomicFile.h"
#include "support/PrivateHome.h"
#include "support/TemporaryDirectory.h"
#include "support/WatchedFsync.h"

namespace vendril {
namespace {

/// A file that is replaced.
class DurableFile : public testing::Test {
 protected:
  std::ptrdiff_t filesBesideIt() const {
    const std::filesystem::directory_iterator entries(directory.path());
    return std::distance(begin(entries), end(entries)) - 1;
  }

  TemporaryDirectory directory;
  std::string path = directory.write("file", "old");
};

TEST_F(DurableFile, IsWholeOnTheDiskBeforeItTakesTheOldOnesPlace) {
  std::string synchronized;
  std::string meanwhile;
  const WatchedFsync watched([&](int descriptor) {
    synchronized = readFile("/proc/self/fd/" + std::to_string(descriptor));
    meanwhile = readFile(path);
    return true;
  });
  EXPECT_FALSE(replaceFile(path, "new"));
  EXPECT_EQ(synchronized, "new");
  EXPECT_EQ(meanwhile, "old");
  EXPECT_EQ(readFile(path), "new");
}

TEST_F(DurableFile, KeepsTheOldContentsWhenTheDiskDoesNotTakeTheNewOnes) {
  const WatchedFsync watched([](int) { return false; });
  EXPECT_EQ(replaceFile(path, "new"), std::errc::io_error);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(filesBesideIt(), 0);
}

}  // namespace
}  // namespace vendril
