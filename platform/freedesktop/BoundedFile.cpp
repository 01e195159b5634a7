#include "platform/freedesktop/BoundedFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/freedesktop/FileDescriptor.h"

namespace vendril {
namespace {

bool isRegularFile(const FileDescriptor& file) {
  struct stat status {};
  return fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
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

}  // namespace

std::optional<std::string> readBoundedFile(const std::string& path, std::size_t limit) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (!file || !isRegularFile(file)) {
    return std::nullopt;
  }
  // The size that the file system tells may change, and is 0 for files that it makes up as they are
  // read, so only what is read counts.
  constexpr std::size_t kBlock = 16384;
  std::string bytes;
  while (true) {
    const ssize_t count = appendNext(bytes, kBlock, file);
    if (count < 0 || bytes.size() > limit) {
      return std::nullopt;
    }
    if (count == 0) {
      return bytes;
    }
  }
}

}  // namespace vendril
