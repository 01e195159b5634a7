#include "platform/FileSystem.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TemporaryDirectory.h"

namespace vendril {
namespace {

TEST(FileSystem, TellsWhatStandsAtAPath) {
  const TemporaryDirectory directory;
  EXPECT_EQ(fileKindAt(directory.path()), FileKind::folder);
  EXPECT_EQ(fileKindAt(directory.write("file", "")), FileKind::other);
  EXPECT_EQ(fileKindAt(directory / "missing"), FileKind::missing);
  EXPECT_EQ(fileKindAt(directory / "file/below"), FileKind::missing);
  EXPECT_EQ(fileKindAt(""), FileKind::missing);
}

TEST(FileSystem, ALinkCountsAsWhatItPointsTo) {
  const TemporaryDirectory directory;
  std::filesystem::create_symlink(directory.path(), directory / "folder");
  std::filesystem::create_symlink(directory / "missing", directory / "broken");
  std::filesystem::create_symlink(directory / "loop", directory / "loop");
  EXPECT_EQ(fileKindAt(directory / "folder"), FileKind::folder);
  EXPECT_EQ(fileKindAt(directory / "broken"), FileKind::missing);
  EXPECT_EQ(fileKindAt(directory / "loop"), FileKind::missing);
}

TEST(FileSystem, APathWithANulByteNamesNothing) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("file", "") + std::string("\0x", 2);
  EXPECT_EQ(fileKindAt(path), FileKind::missing);
  EXPECT_EQ(removeFileAt(path), std::errc::invalid_argument);
  EXPECT_EQ(createFolder(path), std::errc::invalid_argument);
  EXPECT_EQ(fileKindAt(directory / "file"), FileKind::other);
}

TEST(FileSystem, CreatesAFolderWithAllAboveIt) {
  const TemporaryDirectory directory;
  EXPECT_FALSE(createFolder(directory / "a/b/c/"));
  EXPECT_EQ(fileKindAt(directory / "a/b/c"), FileKind::folder);
  EXPECT_FALSE(createFolder(directory / "a/b/c"));
}

TEST(FileSystem, CannotCreateAFolderBelowAFile) {
  const TemporaryDirectory directory;
  directory.write("file", "");
  EXPECT_EQ(createFolder(directory / "file/a"), std::errc::not_a_directory);
}

TEST(FileSystem, RemovesALinkAndNotItsTarget) {
  const TemporaryDirectory directory;
  std::filesystem::create_symlink(directory.write("file", ""), directory / "link");
  EXPECT_FALSE(removeFileAt(directory / "link"));
  EXPECT_EQ(fileKindAt(directory / "link"), FileKind::missing);
  EXPECT_EQ(fileKindAt(directory / "file"), FileKind::other);
}

TEST(FileSystem, RemovesNoFolderWithSomethingInIt) {
  const TemporaryDirectory directory;
  directory.write("file", "");
  EXPECT_EQ(removeFileAt(directory.path()), std::errc::directory_not_empty);
  EXPECT_EQ(fileKindAt(directory / "file"), FileKind::other);
}

TEST(FileSystem, JoinsPathsWithOneSlash) {
  EXPECT_EQ(appendPathComponent("/a", "b"), "/a/b");
  EXPECT_EQ(appendPathComponent("/a//", "/b"), "/a/b");
  EXPECT_EQ(appendPathComponent("/", "b"), "/b");
  EXPECT_EQ(appendPathComponent("a", "b/c"), "a/b/c");
  EXPECT_EQ(appendPathComponent("", "b"), "b");
}

}  // namespace
}  // namespace vendril
