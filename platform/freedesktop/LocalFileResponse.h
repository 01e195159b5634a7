#pragma once

#include <cstddef>
#include <string>

#include "platform/Url.h"
#include "platform/freedesktop/RequestCompletion.h"

namespace vendril {

/// Answers a request for a file URL with the contents of the file: a response that is not an HTTP
/// response. Anything but a readable regular file of at most `maxSize` bytes on this machine is an
/// error. Waits for the disk, but never for the other end of a pipe.
void respondWithLocalFile(const Url& url, std::size_t maxSize, RequestCompletion& completion);

}  // namespace vendril
