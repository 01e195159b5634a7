#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistUserDefaults.h"
#include "support/PlistTestDirectory.h"

namespace vendril::test {
namespace {

namespace fs = std::filesystem;
using Dictionary = PropertyList::Dictionary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RecordingLog : public SystemLog {
 public:
  void write(std::string_view message) noexcept override { messages.emplace_back(message); }

  std::vector<std::string> messages;
};

class FixedDirectories : public UserDirectories {
 public:
  explicit FixedDirectories(std::vector<std::string> directories)
      : directories_(std::move(directories)) {}
  std::vector<std::string> libraryDirectories() const override { return directories_; }

 private:
  std::vector<std::string> directories_;
};

class UserDefaultsOnDisk : public testing::Test {
 protected:
  PlistUserDefaults open() { return {path_, files_, log_}; }
  std::optional<Dictionary> stored() const { return files_.dictionaryWithContentsOfFile(path_); }
  void store(const Dictionary& root) const {
    fs::create_directories(fs::path(path_).parent_path());
    ASSERT_TRUE(files_.writeDictionary(root, path_));
  }
  /// Changes whenever the file is replaced or written.
  std::pair<ino_t, std::int64_t> version() const {
    struct stat status {};
    EXPECT_EQ(stat(path_.c_str(), &status), 0);
    return {status.st_ino, status.st_ctim.tv_sec * 1'000'000'000 + status.st_ctim.tv_nsec};
  }

  PlistTestDirectory directory_;
  const std::string path_ = directory_.file("Library/Preferences/defaults.plist");
  const PlistFiles files_{};
  RecordingLog log_;
};

TEST_F(UserDefaultsOnDisk, AreEmptyAtTheFirstStartAndLeaveNoTrace) {
  PlistUserDefaults defaults = open();
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), std::nullopt);
  defaults.setObject(std::nullopt, "LogDirectory");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_THAT(directory_.names(), IsEmpty());
  EXPECT_THAT(log_.messages, IsEmpty());
}

TEST_F(UserDefaultsOnDisk, KeepATextAcrossStarts) {
  PlistUserDefaults defaults = open();
  defaults.setObject("/var/log/\xC3\xA4", "LogDirectory");
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), "/var/log/\xC3\xA4");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(open().stringForKey("LogDirectory"), "/var/log/\xC3\xA4");
}

TEST_F(UserDefaultsOnDisk, TouchTheDiskOnlyWhenSynchronized) {
  PlistUserDefaults defaults = open();
  defaults.setObject("/a", "LogDirectory");
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_TRUE(fs::exists(path_));
}

TEST_F(UserDefaultsOnDisk, MakeTheirDirectoriesForTheUserAlone) {
  PlistUserDefaults defaults = open();
  defaults.setObject("/a", "LogDirectory");
  ASSERT_TRUE(defaults.synchronize());
  for (const char* name : {"Library", "Library/Preferences"}) {
    EXPECT_EQ(fs::status(directory_.file(name)).permissions(), fs::perms::owner_all) << name;
  }
}

TEST_F(UserDefaultsOnDisk, RemoveAnEntry) {
  store({{"LogDirectory", "/a"}});
  PlistUserDefaults defaults = open();
  defaults.setObject(std::nullopt, "LogDirectory");
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), std::nullopt);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), Dictionary());
}

TEST_F(UserDefaultsOnDisk, WriteNothingWhenNothingHasChanged) {
  store({{"LogDirectory", "/a"}});
  const auto before = version();
  PlistUserDefaults defaults = open();
  defaults.setObject("/a", "LogDirectory");
  defaults.setObject(std::nullopt, "Other");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(version(), before);

  defaults.setObject("/b", "LogDirectory");
  EXPECT_TRUE(defaults.synchronize());
  const auto after = version();
  EXPECT_NE(after, before);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(version(), after);
}

TEST_F(UserDefaultsOnDisk, KeepTheEntriesOfOthers) {
  const PropertyList foreign = PropertyList::Array{1, Date(std::chrono::hours(24))};
  store({{"Foreign", foreign}, {"LogDirectory", "/a"}});
  PlistUserDefaults defaults = open();
  defaults.setObject("/b", "LogDirectory");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), (Dictionary{{"Foreign", foreign}, {"LogDirectory", "/b"}}));
}

TEST_F(UserDefaultsOnDisk, HaveNoTextWhereAnotherKindOfValueIs) {
  store({{"LogDirectory", 7}});
  PlistUserDefaults defaults = open();
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), std::nullopt);
  defaults.setObject("/b", "LogDirectory");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), (Dictionary{{"LogDirectory", "/b"}}));
}

TEST_F(UserDefaultsOnDisk, ReportAFileThatCannotBeReadOnceAndReplaceItWithTheNextChange) {
  store({});
  writeBytes(path_, "damaged");
  PlistUserDefaults defaults = open();
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), std::nullopt);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(readBytes(path_), "damaged");

  defaults.setObject("/a", "LogDirectory");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), (Dictionary{{"LogDirectory", "/a"}}));
  EXPECT_THAT(log_.messages, ElementsAre(HasSubstr(path_)));
}

TEST_F(UserDefaultsOnDisk, TryAgainAfterAFailure) {
  writeBytes(directory_.file("Library"), "in the way");
  PlistUserDefaults defaults = open();
  defaults.setObject("/a", "LogDirectory");
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), "/a");
  fs::remove(directory_.file("Library"));
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(stored(), (Dictionary{{"LogDirectory", "/a"}}));
}

TEST_F(UserDefaultsOnDisk, LiveInMemoryWithoutAPath) {
  PlistUserDefaults defaults(std::nullopt, files_, log_);
  defaults.setObject("/a", "LogDirectory");
  EXPECT_EQ(defaults.stringForKey("LogDirectory"), "/a");
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_THAT(log_.messages, IsEmpty());
}

TEST(UserDefaultsPath, LiesInThePreferencesOfTheFirstLibrary) {
  EXPECT_EQ(userDefaultsPath(FixedDirectories({"/l", "/m"}), "com.example.app"),
            "/l/Preferences/com.example.app.plist");
  EXPECT_EQ(userDefaultsPath(FixedDirectories({}), "com.example.app"), std::nullopt);
}

}  // namespace
}  // namespace vendril::test
