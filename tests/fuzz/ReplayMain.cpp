// Stands in for libFuzzer where there is none: gives each file in the directories named by its
// arguments to the fuzz target. A directory that is missing holds nothing, but no input at all is a
// failure.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& directory) {
  std::vector<fs::path> files;
  if (fs::exists(directory)) {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  // Told before, since a target that fails does not return.
  std::cout << path.string() << std::endl;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& path : filesIn(argv[i])) {
      replay(path);
      ++count;
    }
  }
  std::cout << count << " inputs replayed\n";
  return count > 0 ? 0 : 1;
}
