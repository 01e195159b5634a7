#pragma once

#include <sys/types.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace vendril::tools {

/// Reads what a program prints, line by line. The program ends with this object, and with the
/// process that it belongs to.
class LineReader {
 public:
  /// Starts `command`, found on PATH; throws std::runtime_error when that fails.
  explicit LineReader(const std::vector<std::string>& command);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  /// The next line, without its end; waits for it. Nothing when there is none any more.
  std::optional<std::string> next();

 private:
  std::FILE* output_ = nullptr;
  pid_t process_ = -1;
};

}  // namespace vendril::tools
