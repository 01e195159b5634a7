#include "tools/Processes.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The fields of /proc/PID/stat from the third on. The second, the name in parentheses, may hold
/// anything.
std::vector<std::string> statusFields(const fs::path& directory) {
  const std::string text = textOf(directory / "stat");
  const std::size_t name = text.rfind(')');
  std::istringstream rest(name != std::string::npos ? text.substr(name + 1) : "");
  return {std::istream_iterator<std::string>(rest), std::istream_iterator<std::string>()};
}

/// When the system was started, in seconds since the epoch; nothing when the kernel does not tell.
std::optional<long long> bootTime() {
  std::istringstream text(textOf("/proc/stat"));
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with("btime ")) {
      return std::atoll(line.c_str() + 6);
    }
  }
  return std::nullopt;
}

std::optional<Date> startTime(const std::vector<std::string>& fields) {
  constexpr std::size_t kStartTime = 22 - 3;  // proc(5) counts from 1, and two fields are gone
  const std::optional<long long> boot = bootTime();
  const long ticksPerSecond = sysconf(_SC_CLK_TCK);
  if (!boot || fields.size() <= kStartTime || ticksPerSecond <= 0) {
    return std::nullopt;
  }
  const long long sinceBoot = std::atoll(fields[kStartTime].c_str()) / ticksPerSecond;
  return Date(std::chrono::seconds(*boot + sinceBoot));
}

/// The bus that the environment of a process names.
std::string busOf(const fs::path& directory) {
  constexpr std::string_view kVariable = "DBUS_SESSION_BUS_ADDRESS=";
  std::istringstream environment(textOf(directory / "environ"));
  for (std::string entry; std::getline(environment, entry, '\0');) {
    if (entry.starts_with(kVariable)) {
      return entry.substr(kVariable.size());
    }
  }
  return "";
}

}  // namespace

std::optional<Process> processWith(pid_t id) {
  const fs::path directory = "/proc/" + std::to_string(id);
  std::error_code error;
  const std::string link = fs::read_symlink(directory / "exe", error);
  if (error) {
    return std::nullopt;
  }
  const std::vector<std::string> fields = statusFields(directory);
  Process process;
  process.id = id;
  process.program = link.ends_with(" (deleted)") ? link.substr(0, link.rfind(" (deleted)")) : link;
  process.isOutdated = process.program != link;
  process.isStopped = !fields.empty() && (fields[0] == "T" || fields[0] == "t");
  process.since = startTime(fields);
  return process;
}

std::vector<Process> processesOf(const std::string& program) {
  const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  std::vector<Process> found;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator("/proc", ignored)) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    const std::optional<Process> process = processWith(std::atoi(name.c_str()));
    if (process && process->program == program &&
        busOf(entry.path()) == (bus != nullptr ? bus : "")) {
      found.push_back(*process);
    }
  }
  return found;
}

}  // namespace vendril::tools
