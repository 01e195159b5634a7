#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "logging/AtomicSharedPointer.h"
#include "platform/Date.h"
#include "platform/MessageFormat.h"

namespace vendril {

/// The application's log: every message goes to the system log and, while a log file is open, to
/// that file as one line "[yyyy-MM-dd HH:mm:ss.SSS] message" in local time. Nothing is ever
/// reported to the caller; a log that cannot be written is silent.
///
/// `log` and `flush` may be called from any thread, also while the main thread redirects the log.
/// Everything else is for the main thread.
class ZQN5SimpleLogger {
 public:
  static constexpr const char* kClassName = "ZQN5SimpleLogger";

  /// A logger that writes to the system log only.
  ZQN5SimpleLogger() : ZQN5SimpleLogger(std::nullopt) {}
  /// A logger that writes to the file at `path` too, when there is a path and the file can be
  /// opened.
  explicit ZQN5SimpleLogger(const std::optional<std::string>& path);
  ZQN5SimpleLogger(const ZQN5SimpleLogger&) = delete;
  ZQN5SimpleLogger& operator=(const ZQN5SimpleLogger&) = delete;
  /// Closes the stream, if one is open.
  ~ZQN5SimpleLogger() = default;

  /// Formats and writes one message; a null format writes nothing anywhere. The line has been
  /// handed to the operating system when this returns.
  template <class... Args>
  void log(MessageFormat<Args...> format, const Args&... arguments) {
    if (format.text() != nullptr) {
      write(formatMessage<Args...>(format, arguments...));
    }
  }

  /// Flushes the stream, if one is open.
  void flush();

  /// The path of the log file; nothing, or empty, when there is none.
  const std::optional<std::string>& path() const { return path_; }

  /// Redirects the log to the file at `path`, which is created when it is missing and never
  /// truncated, or drops the log file when the path is empty. Does nothing when the path does not
  /// change. A file that cannot be opened is logged, and leaves the logger without a path.
  void setPath(const std::optional<std::string>& path);

  /// Whether `setPath` takes `path` for a new one. While there is no path, only the low 8 bits of
  /// the new path's length count, so that a length of 256 is no change.
  bool pathChanged(const std::optional<std::string>& path) const;

  /// What the time stamps are formatted with.
  DateFormatter dateFormatter() const { return *dateFormatter_.load(); }
  void setDateFormatter(DateFormatter formatter);

  /// The stream of the open log file, owned by the logger; null when none is open.
  std::FILE* fileDescriptor() const;
  /// Takes over `stream`, which may be null. The stream before it is let go without being closed.
  void setFileDescriptor(std::FILE* stream);

  /// The path of the log file `file` in `directory`; nothing when either is missing or empty. With
  /// `create` the directory is created when it is missing and an old log file of more than
  /// `maxSize` bytes is removed; nothing is returned when that fails. Failures are written to the
  /// system log only.
  static std::optional<std::string> logPath(const std::optional<std::string>& directory,
                                            const std::optional<std::string>& file,
                                            std::uint64_t maxSize, bool create);

 private:
  class Stream;

  void write(const std::string& message);
  void openFile(const std::string& path);

  std::optional<std::string> path_;
  AtomicSharedPointer<const DateFormatter> dateFormatter_;
  AtomicSharedPointer<Stream> stream_;
};

}  // namespace vendril
