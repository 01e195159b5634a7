#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/Date.h"

namespace vendril::tools {

/// A process, as the kernel tells of it.
struct Process {
  pid_t id = 0;
  /// The path of its program.
  std::string program;
  /// True when the file that it runs has been replaced or deleted since it started.
  bool isOutdated = false;
  /// True when a signal or a debugger has stopped it.
  bool isStopped = false;
  std::optional<Date> since;
};

/// The process `id`; nothing when there is none or when it is another user's.
std::optional<Process> processWith(pid_t id);

/// The processes of this user and this session, as the environment names its bus, that run
/// `program`.
std::vector<Process> processesOf(const std::string& program);

}  // namespace vendril::tools
