#include "support/ThreadActivity.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace vendril {
namespace {

namespace fs = std::filesystem;

fs::path directoryOf(pid_t thread) {
  return fs::path("/proc/self/task") / std::to_string(thread);
}

std::size_t entries(const fs::path& directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

/// The value of one line of a thread's status; empty when the thread or the line is missing.
std::string statusField(pid_t thread, const std::string& name) {
  std::ifstream status(directoryOf(thread) / "status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name + ":\t")) {
      return line.substr(name.size() + 2);
    }
  }
  return {};
}

}  // namespace

std::size_t threadCount() {
  return entries("/proc/self/task");
}

/// The descriptor with which the directory is read does not count.
std::size_t openDescriptors() {
  return entries("/proc/self/fd") - 1;
}

std::optional<pid_t> threadNamed(const std::string& name) {
  for (const auto& entry : fs::directory_iterator("/proc/self/task")) {
    const pid_t thread = std::stoi(entry.path().filename().string());
    if (statusField(thread, "Name") == name) {
      return thread;
    }
  }
  return std::nullopt;
}

long contextSwitches(pid_t thread) {
  const std::string count = statusField(thread, "voluntary_ctxt_switches");
  return count.empty() ? -1 : std::stol(count);
}

bool waitUntilAsleep(pid_t thread) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!statusField(thread, "State").starts_with('S')) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace vendril
