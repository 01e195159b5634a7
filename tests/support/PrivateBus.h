#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "support/ChildProcess.h"
#include "support/PrivateHome.h"
#include "support/ScopedVariable.h"

namespace vendril {

/// A session bus of the test's own, which the environment names as the session's while this object
/// lives. It starts the services that the private home's data directories name.
class PrivateBus {
 public:
  /// Starts the bus for the user that `home` stands for, which outlives it; throws
  /// std::runtime_error when that fails.
  explicit PrivateBus(const PrivateHome& home);

  const std::string& address() const { return address_; }

  /// The bus itself; its standard error is that of the services which it starts too.
  ChildProcess& daemon() { return *daemon_; }

  /// Makes the bus start `command` for whoever sends a message to `name`.
  void addService(const std::string& name, const std::string& command) const;

  /// Sends a signal to the bus.
  void signal(int number) const { daemon_->signal(number); }

  /// Ends the bus as the end of a session would; every connection to it breaks.
  void stop();

  /// Starts a bus that was stopped once more, under the address that it had.
  void start();

 private:
  std::filesystem::path servicesDirectory_;
  std::filesystem::path configurationFile_;
  std::filesystem::path socket_;
  std::string address_;
  std::optional<ChildProcess> daemon_;
  std::optional<ScopedVariable> variable_;
};

}  // namespace vendril
