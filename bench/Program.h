#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace vendril::bench {

/// What the kernel says about the memory of a process, in KiB.
struct Memory {
  double proportional = 0;
  double privateDirty = 0;
  /// How many libraries are mapped, a number.
  int libraries = 0;
};

/// A process that we started; it is terminated when this goes away.
class Program {
 public:
  /// Starts the program, found on PATH, without a standard output, and with the descriptor as its
  /// standard error, or with none. Throws std::system_error when that failed.
  explicit Program(const std::vector<std::string>& commandLine, int standardError = -1);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t id() const { return pid_; }

  /// Waits for the program to end by itself. Throws std::runtime_error when it ends with another
  /// status than 0.
  void waitForEnd();

  Memory memory() const;

  /// How many descriptors it has open, and how many threads it has.
  std::size_t descriptors() const;
  std::size_t threads() const;

  /// How often its threads have run since they began: the sum of their context switches.
  long contextSwitches() const;

  /// The processor time of all its threads, those that have ended included.
  std::chrono::nanoseconds processorTime() const;

 private:
  pid_t pid_ = 0;
  bool ended_ = false;
};

}  // namespace vendril::bench
