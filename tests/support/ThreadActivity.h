#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

namespace vendril {

/// What the kernel knows about the threads and descriptors of this process.

std::size_t threadCount();
std::size_t openDescriptors();

/// The thread with this name; nothing when there is none.
std::optional<pid_t> threadNamed(const std::string& name);

/// How often a thread has given up the processor by itself: once more each time it goes to sleep.
long contextSwitches(pid_t thread);

/// Waits until a thread sleeps; false when it does not for 20 s.
bool waitUntilAsleep(pid_t thread);

}  // namespace vendril
