#include "bench/Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace vendril::bench {
namespace {

// com.example.Name becomes /com/example/Name.
std::string objectPathOf(const std::string& busName) {
  std::string path = "/" + busName;
  for (char& character : path) {
    if (character == '.') {
      character = '/';
    }
  }
  return path;
}

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

}  // namespace

PrivateBus::PrivateBus() : daemon_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  g_test_dbus_up(daemon_);
  connection_ = g_dbus_connection_new_for_address_sync(
      g_test_dbus_get_bus_address(daemon_),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
  if (connection_ == nullptr) {
    throw std::runtime_error("cannot connect to the private bus");
  }
}

PrivateBus::~PrivateBus() {
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  g_test_dbus_down(daemon_);
  g_object_unref(daemon_);
}

void PrivateBus::open(const std::string& busName, const std::string& link) {
  const char* const links[] = {link.c_str(), nullptr};
  g_dbus_connection_call(connection_, busName.c_str(), objectPathOf(busName).c_str(),
                         "org.freedesktop.Application", "Open",
                         g_variant_new("(^asa{sv})", links, nullptr), nullptr,
                         G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
}

bool PrivateBus::hasOwner(const std::string& busName) {
  g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
      connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "NameHasOwner", g_variant_new("(s)", busName.c_str()), G_VARIANT_TYPE("(b)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  gboolean owned = FALSE;
  if (reply != nullptr) {
    g_variant_get(reply, "(b)", &owned);
  }
  return owned != FALSE;
}

void PrivateBus::waitForOwner(const std::string& busName, bool owned) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (hasOwner(busName) != owned) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error(busName + (owned ? " did not come up" : " did not go away"));
    }
    std::this_thread::sleep_for(1ms);
  }
}

Program::Program(const std::vector<std::string>& commandLine, int standardError) {
  std::vector<char*> arguments;
  arguments.reserve(commandLine.size() + 1);
  for (const std::string& argument : commandLine) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (standardError >= 0) {
    posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  const int error =
      posix_spawn(&pid_, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), commandLine.front());
  }
}

Program::~Program() {
  kill(pid_, SIGTERM);
  waitpid(pid_, nullptr, 0);
}

Memory Program::memory() const {
  const std::filesystem::path file = processDirectory(pid_) / "smaps_rollup";
  return {numberIn(file, "Pss:"), numberIn(file, "Private_Dirty:")};
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

}  // namespace vendril::bench
