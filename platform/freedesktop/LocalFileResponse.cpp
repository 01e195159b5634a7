#include "platform/freedesktop/LocalFileResponse.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/freedesktop/FileDescriptor.h"
#include "platform/freedesktop/RequestCompletion.h"

namespace vendril {
namespace {

std::runtime_error systemError(const std::string& path) {
  return std::runtime_error(path + ": " + std::generic_category().message(errno));
}

/// Opening a pipe or a device may wait or have effects of its own, so it is looked at first, and
/// opened in a way that does not wait if it was exchanged in between.
int openRegularFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    throw systemError(path);
  }
  if (!S_ISREG(status.st_mode)) {
    throw std::runtime_error(path + ": Not a regular file");
  }
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) {
    throw systemError(path);
  }
  return descriptor;
}

std::string contentsOf(const std::string& path, std::size_t maxSize) {
  const FileDescriptor file(openRegularFile(path));
  // One byte more than allowed, to see whether there is more.
  std::string contents(maxSize + 1, '\0');
  std::size_t size = 0;
  while (size < contents.size()) {
    const ssize_t count = read(file.get(), contents.data() + size, contents.size() - size);
    if (count < 0 && errno != EINTR) {
      throw systemError(path);
    }
    if (count == 0) {
      break;
    }
    size += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  if (size > maxSize) {
    throw std::runtime_error(path + ": Larger than " + std::to_string(maxSize) + " bytes");
  }
  contents.resize(size);
  contents.shrink_to_fit();
  return contents;
}

std::string contentsOf(const Url& url, std::size_t maxSize) {
  const std::optional<std::string> path = url.fileSystemPath();
  if (!path) {
    throw std::runtime_error("The URL names no file of this machine");
  }
  return contentsOf(*path, maxSize);
}

void answer(const Url& url, std::size_t maxSize, const UrlConnection::CompletionHandler& handler) {
  std::string contents;
  try {
    contents = contentsOf(url, maxSize);
  } catch (const std::exception& error) {
    handler(std::nullopt, std::nullopt, makeUrlError(error.what()));
    return;
  }
  handler(UrlResponse{}, std::move(contents), std::nullopt);
}

}  // namespace

// The operation does not hold the queue: whoever lets go of the queue last waits for its
// operations, and that must not be one of them.
void respondWithLocalFile(const Url& url, std::size_t maxSize, OperationQueue& queue,
                          UrlConnection::CompletionHandler handler) {
  queue.addOperation(
      [url, maxSize, handler = std::move(handler)] { answer(url, maxSize, handler); });
}

}  // namespace vendril
