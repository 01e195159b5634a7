#include <filesystem>

#include "logging/ZQN5SimpleLogger.h"
#include "platform/FileSystem.h"
#include "platform/Host.h"
#include "platform/SystemLog.h"

namespace vendril {
namespace {

/// Writes to the system log alone: the path is prepared before there is a logger.
template <class... Args>
void logToSystem(MessageFormat<Args...> format, const Args&... arguments) {
  Host::current().systemLog().write(formatMessage<Args...>(format, arguments...));
}

/// The size of a regular file in bytes; 0 when it cannot be told.
std::uint64_t fileSize(const std::string& path) {
  std::error_code error;
  const std::uint64_t size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

bool createDirectory(const std::string& directory) {
  const std::error_code error = createFolder(directory);
  if (error) {
    logToSystem("Failed to create log path: Cannot create directory '%@' - %@", directory,
                error.message());
  }
  return !error;
}

/// Removes an old log file that has outgrown `maxSize`. False when `path` cannot be a log file.
bool clearOldFile(const std::string& path, std::uint64_t maxSize) {
  const FileKind kind = fileKindAt(path);
  if (kind == FileKind::folder) {
    logToSystem(
        "Failed to create log path: Cannot create log file '%@' - "
        "Expected a old log file, found a directory",
        path);
    return false;
  }
  if (kind == FileKind::missing || fileSize(path) <= maxSize) {
    return true;
  }
  const std::error_code error = removeFileAt(path);
  if (error) {
    logToSystem("Failed to create log path: Cannot remove old log file '%@' - %@", path,
                error.message());
  }
  return !error;
}

/// Makes `directory` ready for the log file at `path`.
bool prepare(const std::string& directory, const std::string& path, std::uint64_t maxSize) {
  switch (fileKindAt(directory)) {
    case FileKind::missing:
      return createDirectory(directory);
    case FileKind::folder:
      return clearOldFile(path, maxSize);
    case FileKind::other:
      break;
  }
  logToSystem(
      "Failed to create log path: Cannot create directory '%@' - "
      "Expected a folder to store application logs, found a file",
      directory);
  return false;
}

}  // namespace

std::optional<std::string> ZQN5SimpleLogger::logPath(const std::optional<std::string>& directory,
                                                     const std::optional<std::string>& file,
                                                     std::uint64_t maxSize, bool create) {
  if (!directory || directory->empty() || !file || file->empty()) {
    logToSystem("Failed to create log path: Invalid arguments");
    return std::nullopt;
  }
  std::string path = appendPathComponent(*directory, *file);
  if (create && !prepare(*directory, path, maxSize)) {
    return std::nullopt;
  }
  return path;
}

}  // namespace vendril
