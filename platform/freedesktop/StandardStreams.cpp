#include "platform/freedesktop/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/freedesktop/FileDescriptor.h"

namespace vendril {
namespace {

/// Opens the null device at the lowest free place; children inherit it, as they do a stream.
int openNullDevice() {
  return ::open("/dev/null", O_RDWR);
}

}  // namespace

StandardStreams::StandardStreams() {
  int descriptor = openNullDevice();
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
    descriptor = openNullDevice();
  }
  const FileDescriptor surplus(descriptor);
}

}  // namespace vendril
