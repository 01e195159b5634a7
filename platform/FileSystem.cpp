#include "platform/FileSystem.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

namespace vendril {
namespace {

/// The system takes a NUL for the end of a path and would go to a file with a shorter name.
bool holdsNul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

}  // namespace

// With stat(2) alone: std::filesystem takes the path apart first, and every link asks several
// times.
FileKind fileKindAt(const std::string& path) {
  struct stat status {};
  if (holdsNul(path) || stat(path.c_str(), &status) != 0) {
    return FileKind::missing;
  }
  return S_ISDIR(status.st_mode) ? FileKind::folder : FileKind::other;
}

std::error_code createFolder(const std::string& path) {
  if (holdsNul(path)) {
    return std::make_error_code(std::errc::invalid_argument);
  }
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return error;
}

std::error_code removeFileAt(const std::string& path) {
  if (holdsNul(path)) {
    return std::make_error_code(std::errc::invalid_argument);
  }
  std::error_code error;
  std::filesystem::remove(path, error);
  return error;
}

std::string appendPathComponent(std::string_view path, std::string_view component) {
  std::string result(path.substr(0, path.find_last_not_of('/') + 1));
  if (!path.empty()) {
    result += '/';
  }
  component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
  return result.append(component);
}

}  // namespace vendril
