#pragma once

#include <functional>
#include <string_view>
#include <thread>

#include "bench/Descriptor.h"

namespace vendril::bench {

/// A pipe for the standard error of a program, read line by line on a thread of its own: the agent
/// drops records that nobody takes in time.
class RecordPipe {
 public:
  using LineReader = std::function<void(std::string_view line)>;

  /// `read` is called on the reading thread. Throws std::system_error when there is no pipe.
  explicit RecordPipe(LineReader read);
  RecordPipe(const RecordPipe&) = delete;
  RecordPipe& operator=(const RecordPipe&) = delete;
  /// Waits until the program, and whoever else has the end to write into, has closed it.
  ~RecordPipe();

  /// The end to write into, until it is closed on this side.
  int writeEnd() const { return writeEnd_.get(); }
  void closeWriteEnd() { writeEnd_ = Descriptor(); }

 private:
  void run(const LineReader& read);

  Descriptor readEnd_;
  Descriptor writeEnd_;
  std::thread thread_;
};

}  // namespace vendril::bench
