#pragma once

#include <gio/gio.h>
#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vendril::bench {

/// A session bus of our own. While it lives, it is the session bus of this process and of those
/// that it starts.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// Asks the owner of `busName` to open `link`; does not wait for an answer.
  void open(const std::string& busName, const std::string& link);

  /// Waits until `busName` has an owner, or has none. Throws std::runtime_error after 10 s.
  void waitForOwner(const std::string& busName, bool owned);

 private:
  bool hasOwner(const std::string& busName);

  GTestDBus* daemon_;
  GDBusConnection* connection_ = nullptr;
};

/// What the kernel says about the memory of a process, in KiB.
struct Memory {
  double proportional = 0;
  double privateDirty = 0;
};

/// A process that we started; it is terminated when this goes away.
class Program {
 public:
  /// Starts the program with the descriptor as its standard error, or with none. Throws
  /// std::system_error when that failed.
  explicit Program(const std::vector<std::string>& commandLine, int standardError = -1);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  Memory memory() const;

  /// How many descriptors it has open, and how many threads it has.
  std::size_t descriptors() const;
  std::size_t threads() const;

  /// How often its threads have run since they began: the sum of their context switches.
  long contextSwitches() const;

 private:
  pid_t pid_ = 0;
};

}  // namespace vendril::bench
