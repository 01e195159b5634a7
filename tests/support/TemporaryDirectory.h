#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

namespace vendril {

/// An empty directory of a test's own, which goes away with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory()
      : path_((std::filesystem::temp_directory_path() / "vendril-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), path_);
    }
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::string& path() const { return path_; }

  /// The path of an entry of the directory.
  std::string operator/(std::string_view name) const { return path_ + '/' + std::string(name); }

  /// Writes a file in the directory and returns its path.
  std::string write(std::string_view name, std::string_view contents) const {
    std::ofstream(*this / name, std::ios::binary) << contents;
    return *this / name;
  }

  /// The contents of a file in the directory; empty when there is none.
  std::string read(std::string_view name) const {
    std::ifstream file(*this / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

 private:
  std::string path_;
};

}  // namespace vendril
