#include "platform/freedesktop/BoundedFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/freedesktop/FileDescriptor.h"

namespace vendril {
namespace {

FileDescriptor openToRead(const std::string& path) {
  return FileDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
}

/// Appends what the file holds next, at most `count` bytes; the number of bytes, or -1.
ssize_t appendNext(std::string& bytes, std::size_t count, const FileDescriptor& file) {
  const std::size_t begin = bytes.size();
  bytes.resize(begin + count);
  ssize_t result = 0;
  do {
    result = read(file.get(), bytes.data() + begin, count);
  } while (result < 0 && errno == EINTR);
  bytes.resize(begin + (result > 0 ? static_cast<std::size_t>(result) : 0));
  return result;
}

std::optional<std::string> readRegularFile(const FileDescriptor& file, std::size_t limit) {
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  // The size that the file system tells saves room, and the read that would find the end; it is 0,
  // or too much, for files that are made up as they are read.
  constexpr std::size_t kBlock = 4096;
  const auto told = static_cast<std::size_t>(status.st_size);
  std::string bytes;
  for (std::size_t room = std::min(told, limit) + 1;; room = kBlock) {
    const ssize_t count = appendNext(bytes, room, file);
    if (count < 0 || bytes.size() > limit) {
      return std::nullopt;
    }
    // More was asked for than was told, and a file on a disk gives less only at its end.
    const bool endedAsTold = told > 0 && bytes.size() == told;
    if (count == 0 || endedAsTold) {
      return bytes;
    }
  }
}

}  // namespace

std::optional<std::string> readBoundedFile(const std::string& path, std::size_t limit) {
  return readRegularFile(openToRead(path), limit);
}

std::optional<std::string> readBoundedFileIfAny(const std::string& path, std::size_t limit) {
  const FileDescriptor file = openToRead(path);
  return !file && errno == ENOENT ? std::string() : readRegularFile(file, limit);
}

}  // namespace vendril
