#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace vendril {

/// The bytes of the regular file at `path`, symbolic links followed; nothing when there is no such
/// file, when it cannot be read, or when it holds more than `limit` bytes. Never waits for a writer
/// at the other end, and never becomes the controlling process of a terminal, whatever lies at
/// `path`. Synchronous, any thread.
std::optional<std::string> readBoundedFile(const std::string& path, std::size_t limit);

/// As above, but a file that does not exist counts as an empty one.
std::optional<std::string> readBoundedFileIfAny(const std::string& path, std::size_t limit);

}  // namespace vendril
