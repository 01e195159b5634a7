// Runs a program where a journal seems to be, and prints each record that the journal gets, on
// standard output and followed by an empty line:
//
//   fake_journal [--stderr] PROGRAM ARGUMENT...
//
// With --stderr the program's standard error leads to the journal, as a service's does, and is
// printed too when the program has ended. Lives in a mount namespace of its own, so nothing outside
// sees the journal. Exits with the program's status, or with 77 when the system does not allow
// that.

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace {

constexpr int kNotPermitted = 77;

class NotPermitted : public std::system_error {
 public:
  explicit NotPermitted(const char* what)
      : std::system_error(errno, std::generic_category(), what) {}
};

void check(int result, const char* what) {
  if (result < 0) {
    throw NotPermitted(what);
  }
}

void writeMap(const char* path, const std::string& text) {
  const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
  check(fd, path);
  check(static_cast<int>(::write(fd, text.data(), text.size())), path);
  ::close(fd);
}

// Files can only be made by users and groups that the new namespace knows.
void keepIdentity(uid_t user, gid_t group) {
  writeMap("/proc/self/setgroups", "deny");
  writeMap("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1");
  writeMap("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1");
}

void enterOwnNamespace() {
  const uid_t user = ::getuid();
  const gid_t group = ::getgid();
  check(::unshare(CLONE_NEWUSER | CLONE_NEWNS), "unshare");
  keepIdentity(user, group);
  check(::mount("tmpfs", "/run", "tmpfs", 0, nullptr), "mount");
  check(::mkdir("/run/systemd", 0755), "mkdir");
  check(::mkdir("/run/systemd/journal", 0755), "mkdir");
}

int listenAt(std::string_view path, int type) {
  const int fd = ::socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  check(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
  if (type == SOCK_STREAM) {
    check(::listen(fd, 1), "listen");
  }
  return fd;
}

int connectTo(int listener) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  check(::connect(fd, reinterpret_cast<const sockaddr*>(&address), size), "connect");
  return fd;
}

int runProgram(char** arguments, int errorFd) {
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, errorFd, STDERR_FILENO);
  pid_t pid = -1;
  const int error = ::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), arguments[0]);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void printAll(int fd, std::string_view separator) {
  std::array<char, 65536> buffer{};
  ssize_t count = 0;
  while ((count = ::recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0) {
    std::cout << std::string_view(buffer.data(), static_cast<std::size_t>(count)) << separator;
  }
}

int run(std::span<char*> arguments) {
  const bool errorToJournal = std::string_view(arguments[1]) == "--stderr";
  enterOwnNamespace();
  const int records = listenAt("/run/systemd/journal/socket", SOCK_DGRAM);
  const int streams = listenAt("/run/systemd/journal/stdout", SOCK_STREAM);
  const int errorFd = errorToJournal ? connectTo(streams) : STDERR_FILENO;
  const int status = runProgram(arguments.subspan(errorToJournal ? 2 : 1).data(), errorFd);
  printAll(records, "\n");
  if (errorToJournal) {
    printAll(::accept(streams, nullptr, nullptr), "");
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv, static_cast<std::size_t>(argc)});
  } catch (const NotPermitted& refusal) {
    std::cerr << refusal.what() << '\n';
    return kNotPermitted;
  } catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
  }
}
