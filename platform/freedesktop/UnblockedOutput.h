#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <string_view>

#include "platform/freedesktop/ReaderPatience.h"

namespace vendril {

/// Writes records to a descriptor that other processes share, and never waits long for whoever
/// reads it: a record is given up when there is no room for it, because a log that nobody reads
/// must not stop its writer. The descriptor's flags stay as they are, since they belong to all who
/// share it. Any thread may write at any time; a record of up to PIPE_BUF bytes is one write(2) and
/// stays in one piece.
class UnblockedOutput {
 public:
  /// `descriptor` stays the caller's and stays open. When it is not open, nothing is ever written.
  explicit UnblockedOutput(int descriptor);
  UnblockedOutput(const UnblockedOutput&) = delete;
  UnblockedOutput& operator=(const UnblockedOutput&) = delete;
  ~UnblockedOutput();

  void write(std::string_view record) noexcept;

 private:
  std::size_t putAll(std::string_view bytes) noexcept;
  ssize_t put(std::string_view bytes) const noexcept;

  int descriptor_;
  bool owned_ = false;
  bool socket_ = false;
  /// A write waits for the reader, so look before each piece of PIPE_BUF bytes, for which there is
  /// room then.
  bool mayBlock_ = false;
  ReaderPatience patience_;
  /// The end of a long record did not find room, so its line is still open.
  std::atomic<bool> torn_ = false;
};

}  // namespace vendril
