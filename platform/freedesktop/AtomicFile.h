#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace vendril {

/// Replaces the file at `path` by one that holds `contents`, or creates it. Readers see the old
/// file or the new one, whole, and so does whoever comes after a crash. The result is the error, or
/// none (false) after success; after a failure the old file stands and nothing is left beside it.
///
/// A symbolic link at `path` is written through: the link stays and its target is replaced, or
/// created. The permission bits of an old file are kept; those of a new one follow the umask. What
/// is there and is not a regular file is refused. The directory must exist.
///
/// Synchronous, any thread; when two writers meet, the last one wins.
[[nodiscard]] std::error_code replaceFile(const std::string& path, std::string_view contents);

}  // namespace vendril
