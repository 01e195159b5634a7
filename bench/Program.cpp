#include "bench/Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <system_error>

namespace vendril::bench {
namespace {

// The number after `name` on the line of `file` that begins with it.
double numberIn(const std::filesystem::path& file, const std::string& name) {
  std::ifstream stream(file);
  std::string line;
  while (std::getline(stream, line)) {
    if (line.starts_with(name)) {
      return std::stod(line.substr(name.size()));
    }
  }
  throw std::runtime_error("no " + name + " in " + file.string());
}

std::filesystem::path processDirectory(pid_t pid) {
  return std::filesystem::path("/proc") / std::to_string(pid);
}

std::size_t entriesOf(const std::filesystem::path& directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

int countLibraries(const std::filesystem::path& maps) {
  std::ifstream stream(maps);
  std::set<std::string> libraries;
  std::string line;
  while (std::getline(stream, line)) {
    const std::size_t path = line.find('/');
    if (path != std::string::npos && line.find(".so", path) != std::string::npos) {
      libraries.insert(line.substr(path));
    }
  }
  return static_cast<int>(libraries.size());
}

}  // namespace

Program::Program(const std::vector<std::string>& commandLine, int standardError) {
  std::vector<char*> arguments;
  arguments.reserve(commandLine.size() + 1);
  for (const std::string& argument : commandLine) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  if (standardError >= 0) {
    posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  const int error =
      posix_spawnp(&pid_, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), commandLine.front());
  }
}

Program::~Program() {
  if (!ended_) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
}

void Program::waitForEnd() {
  int status = 0;
  waitpid(pid_, &status, 0);
  ended_ = true;
  if (status != 0) {
    throw std::runtime_error("a program failed");
  }
}

Memory Program::memory() const {
  const std::filesystem::path directory = processDirectory(pid_);
  const std::filesystem::path rollup = directory / "smaps_rollup";
  return {numberIn(rollup, "Pss:"), numberIn(rollup, "Private_Dirty:"),
          countLibraries(directory / "maps")};
}

std::size_t Program::descriptors() const {
  return entriesOf(processDirectory(pid_) / "fd");
}

std::size_t Program::threads() const {
  return entriesOf(processDirectory(pid_) / "task");
}

long Program::contextSwitches() const {
  double sum = 0;
  for (const auto& task : std::filesystem::directory_iterator(processDirectory(pid_) / "task")) {
    sum += numberIn(task.path() / "status", "voluntary_ctxt_switches:");
    sum += numberIn(task.path() / "status", "nonvoluntary_ctxt_switches:");
  }
  return static_cast<long>(sum);
}

std::chrono::nanoseconds Program::processorTime() const {
  clockid_t clock = 0;
  timespec time{};
  if (clock_getcpuclockid(pid_, &clock) != 0 || clock_gettime(clock, &time) != 0) {
    throw std::system_error(errno, std::generic_category(), "no processor time");
  }
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace vendril::bench
