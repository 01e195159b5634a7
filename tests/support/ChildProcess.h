#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/MainLoop.h"
#include "support/UniqueFd.h"

namespace vendril {

/// A program that a test runs, with its standard output and error captured and its standard input
/// empty. A child that is still there when this object goes away is killed.
class ChildProcess {
 public:
  /// Changes to the environment that the child inherits; nothing removes a variable.
  using Environment = std::vector<std::pair<std::string, std::optional<std::string>>>;

  /// Starts `arguments[0]`, found on PATH when it has no slash; throws std::system_error when that
  /// fails.
  explicit ChildProcess(std::vector<std::string> arguments, const Environment& changes = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  pid_t pid() const { return pid_; }

  /// What the child has written so far, as far as one of the waits below has seen it.
  const std::string& out() const { return out_.text; }
  const std::string& err() const { return err_.text; }

  /// True as soon as the child's standard output, or error, holds `text`; false at the deadline or
  /// when the child has closed that stream without having written it.
  [[nodiscard]] bool waitForOut(std::string_view text,
                                std::chrono::milliseconds deadline = kTestDeadline);
  [[nodiscard]] bool waitForErr(std::string_view text,
                                std::chrono::milliseconds deadline = kTestDeadline);

  /// The exit status, with 128 added to the number of a signal that ended the child; nothing at the
  /// deadline. All that the child itself has written has been read by then.
  std::optional<int> waitForExit(std::chrono::milliseconds deadline = kTestDeadline);

  void signal(int number) const;

 private:
  using TimePoint = std::chrono::steady_clock::time_point;
  struct Stream {
    UniqueFd fd;
    std::string text;
  };

  void pump(TimePoint end);
  bool waitFor(const Stream& stream, std::string_view text, std::chrono::milliseconds deadline);
  static void drain(Stream& stream);

  pid_t pid_ = -1;
  UniqueFd pidFd_;
  Stream out_;
  Stream err_;
  std::optional<int> status_;
};

}  // namespace vendril
