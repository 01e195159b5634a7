#include "platform/freedesktop/UnblockedOutput.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>

namespace vendril {
namespace {

constexpr int kNoDescriptor = -1;

// Opens what `descriptor` has open once more, so that this opening alone does not block.
int reopenUnblocked(int descriptor) {
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  return ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

UnblockedOutput::UnblockedOutput(int descriptor) : descriptor_(descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    descriptor_ = kNoDescriptor;
    return;
  }
  socket_ = S_ISSOCK(status.st_mode);
  if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) {
    const int own = reopenUnblocked(descriptor);
    owned_ = own >= 0;
    mayBlock_ = !owned_;
    descriptor_ = owned_ ? own : descriptor;
  }
}

UnblockedOutput::~UnblockedOutput() {
  if (owned_) {
    ::close(descriptor_);
  }
}

void UnblockedOutput::write(std::string_view record) noexcept {
  if (descriptor_ == kNoDescriptor) {
    return;
  }
  if (torn_.load(std::memory_order_relaxed) && putAll("\n") > 0) {
    return;
  }
  const std::size_t left = putAll(record);
  torn_.store(left > 0 && left < record.size(), std::memory_order_relaxed);
}

// Returns the number of bytes that found no room.
std::size_t UnblockedOutput::putAll(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    if (mayBlock_ && !patience_.waitForRoom(descriptor_)) {
      break;
    }
    const ssize_t count = put(mayBlock_ ? bytes.substr(0, PIPE_BUF) : bytes);
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
      patience_.renew();
    } else if (errno != EINTR && (errno != EAGAIN || !patience_.waitForRoom(descriptor_))) {
      break;
    }
  }
  return bytes.size();
}

ssize_t UnblockedOutput::put(std::string_view bytes) const noexcept {
  return socket_ ? ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
                 : ::write(descriptor_, bytes.data(), bytes.size());
}

}  // namespace vendril
