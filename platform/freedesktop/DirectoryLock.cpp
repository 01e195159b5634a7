#include "platform/freedesktop/DirectoryLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace vendril {

std::optional<DirectoryLock> DirectoryLock::acquire(const std::string& directory,
                                                    std::chrono::milliseconds patience) {
  FileDescriptor file(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file) {
    return std::nullopt;
  }
  // The system's own wait for a lock has no limit, so it is asked again and again.
  constexpr std::chrono::milliseconds kPause(2);
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(file.get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
    if (std::chrono::steady_clock::now() >= end) {
      return std::nullopt;
    }
    std::this_thread::sleep_for(kPause);
  }
  return DirectoryLock(std::move(file));
}

}  // namespace vendril
