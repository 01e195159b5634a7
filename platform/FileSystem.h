#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace vendril {

/// What stands at a path. A symbolic link counts as what it points to; what cannot be looked at
/// counts as missing.
enum class FileKind { missing, folder, other };

/// Asks the file system about `path`. A path that holds a NUL byte names nothing.
FileKind fileKindAt(const std::string& path);

/// Creates a folder and the folders above it, open to everyone as far as the file-creation mask
/// lets it. A folder that is there already is a success. A path that holds a NUL byte is an invalid
/// argument.
std::error_code createFolder(const std::string& path);

/// Deletes a file, a symbolic link (not its target) or an empty folder. A path that names nothing
/// is a success.
std::error_code removeFileAt(const std::string& path);

/// The path of `component` inside the folder `path`, with one slash between the two however many
/// either brings along. An empty folder gives the component alone.
std::string appendPathComponent(std::string_view path, std::string_view component);

}  // namespace vendril
