#pragma once

#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace vendril {

/// A practice portal that a test runs, on a port of its own.
class PortalProcess {
 public:
  /// Starts `program` with `arguments` and waits until it listens; throws std::runtime_error when
  /// it does not.
  PortalProcess(const std::string& program, const std::vector<std::string>& arguments = {});

  int port() const { return port_; }
  /// The URL of a path of this portal.
  std::string url(const std::string& path = "") const;
  ChildProcess& process() { return process_; }

 private:
  ChildProcess process_;
  int port_ = 0;
};

}  // namespace vendril
