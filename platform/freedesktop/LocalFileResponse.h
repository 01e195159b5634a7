#pragma once

#include <cstddef>

#include "platform/UrlConnection.h"

namespace vendril {

/// Answers a request for a file URL, on `queue`, with the contents of the file: a response that is
/// not an HTTP response. Anything but a readable regular file of at most `maxSize` bytes on this
/// machine is an error. Waits for the disk, but never for the other end of a pipe.
void respondWithLocalFile(const Url& url, std::size_t maxSize, OperationQueue& queue,
                          UrlConnection::CompletionHandler handler);

}  // namespace vendril
