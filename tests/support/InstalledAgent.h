#pragma once

#include <gio/gio.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/PropertyList.h"
#include "platform/freedesktop/GlibPtr.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateHome.h"
#include "support/ScopedVariable.h"

namespace vendril {

/// The application as `cmake --install` lays it out, on a desktop of the test's own: private home,
/// private bus, its desktop entry and bus service where the desktop finds them. An agent that the
/// bus started is told to terminate when this object goes away.
class InstalledAgent {
 public:
  InstalledAgent();
  InstalledAgent(const InstalledAgent&) = delete;
  InstalledAgent& operator=(const InstalledAgent&) = delete;
  ~InstalledAgent();

  /// The root of the installation and the program in it.
  static std::string prefix();
  static std::string program();

  const PrivateHome& home() const { return home_; }
  PrivateBus& bus() { return bus_; }

  /// Where the conferencing client publishes its configuration.
  std::string configurationPath() const;
  /// Publishes a configuration whose client is found and capable of everything.
  void publishSampleConfiguration() const;

  /// Starts the program with `arguments`.
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& arguments = {}) const;
  /// Starts the program and waits until it takes links from the bus.
  std::unique_ptr<ChildProcess> startAndWait(const std::vector<std::string>& arguments = {}) const;

  /// Calls Open on the agent without waiting for the answer; starts it when needed.
  void openOnBus(const std::vector<std::string>& links) const;
  /// Runs one of the desktop's own commands to its end; its exit status.
  static std::optional<int> run(const std::vector<std::string>& command);

  /// Asks the process that owns the agent's bus name, if there is one, to terminate.
  void terminate() const;
  /// The process that owns the agent's bus name; nothing when there is none.
  std::optional<pid_t> ownerProcess() const;
  /// True as soon as an agent started by the bus has written `text` to its standard error.
  [[nodiscard]] bool waitForActivatedLog(const std::string& text,
                                         std::chrono::milliseconds deadline = kTestDeadline);
  /// What such an agent has written so far, as far as a wait has seen it.
  const std::string& activatedLog() { return bus_.daemon().err(); }

 private:
  PrivateHome home_;
  ScopedVariable dataDirectories_;
  PrivateBus bus_;
  GObjectPtr<GDBusConnection> connection_;
};

/// A link whose command is to report to `portalUrl` for the session `sessionId`.
std::string linkTo(const std::string& portalUrl, const std::string& sessionId,
                   const std::string& scheme = "vendril");

/// How many open descriptors the process has.
std::size_t openDescriptors(pid_t process);

}  // namespace vendril
