#pragma once

#include <filesystem>

namespace vendril {

/// A small file system in memory, mounted over a directory for as long as the mount namespace
/// lives, with what goes wrong with disks. Throws std::system_error where it cannot be mounted.
class SmallDisk {
 public:
  explicit SmallDisk(const std::filesystem::path& mountPoint);

  /// Leaves no room for another byte.
  void fill() const;
  /// Leaves no room for another file.
  void useUpFiles() const;
  /// Mounts it once more for reading only.
  void makeReadOnly() const;

 private:
  std::filesystem::path mountPoint_;
};

}  // namespace vendril
