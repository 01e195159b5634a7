#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vendril::test {

/// A new directory that goes away, with what is in it, at the end of a test.
class PlistTestDirectory {
 public:
  PlistTestDirectory();
  PlistTestDirectory(const PlistTestDirectory&) = delete;
  PlistTestDirectory& operator=(const PlistTestDirectory&) = delete;
  ~PlistTestDirectory();

  const std::string& path() const { return path_; }
  std::string file(std::string_view name) const { return path_ + '/' + std::string(name); }

  /// The names in the directory, sorted.
  std::vector<std::string> names() const;

 private:
  std::string path_;
};

void writeBytes(const std::string& path, std::string_view bytes);
std::string readBytes(const std::string& path);

}  // namespace vendril::test
