#include "support/WatchedFsync.h"

#include <cerrno>
#include <utility>

namespace {

std::function<bool(int)> watching;

}  // namespace

// The linker turns calls of fsync into calls of the one, and calls of the other into fsync's.
extern "C" int __real_fsync(int descriptor);

extern "C" int __wrap_fsync(int descriptor) {
  if (!watching) {
    return __real_fsync(descriptor);
  }
  if (watching(descriptor)) {
    return 0;
  }
  errno = EIO;
  return -1;
}

namespace vendril {

WatchedFsync::WatchedFsync(std::function<bool(int descriptor)> watch) {
  watching = std::move(watch);
}

WatchedFsync::~WatchedFsync() {
  watching = nullptr;
}

}  // namespace vendril
