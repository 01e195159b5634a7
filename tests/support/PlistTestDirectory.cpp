#include "support/PlistTestDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace vendril::test {

namespace fs = std::filesystem;

PlistTestDirectory::PlistTestDirectory() : path_(fs::temp_directory_path() / "vendril-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
}

PlistTestDirectory::~PlistTestDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::vector<std::string> PlistTestDirectory::names() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void writeBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vendril::test
