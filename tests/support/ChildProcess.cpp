#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace vendril {
namespace {

void check(int error, const std::string& what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

std::pair<UniqueFd, UniqueFd> makePipe() {
  std::array<int, 2> ends{};
  check(::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe2");
  ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::vector<std::string> environmentWith(const ChildProcess::Environment& changes) {
  std::vector<std::string> result;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view entry(*variable);
    const auto changed = [name = entry.substr(0, entry.find('='))](const auto& change) {
      return change.first == name;
    };
    if (std::none_of(changes.begin(), changes.end(), changed)) {
      result.emplace_back(entry);
    }
  }
  for (const auto& [name, value] : changes) {
    if (value) {
      result.push_back(name + "=" + *value);
    }
  }
  return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

pid_t spawn(std::vector<std::string>& arguments, const ChildProcess::Environment& changes,
            const UniqueFd& out, const UniqueFd& err) {
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, out.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, err.get(), STDERR_FILENO);
  std::vector<std::string> environment = environmentWith(changes);
  pid_t pid = -1;
  const int error = ::posix_spawnp(&pid, arguments.front().c_str(), &actions, nullptr,
                                   pointersTo(arguments).data(), pointersTo(environment).data());
  ::posix_spawn_file_actions_destroy(&actions);
  check(error, arguments.front());
  return pid;
}

int millisecondsUntil(std::chrono::steady_clock::time_point end) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 3'600'000));
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> arguments, const Environment& changes) {
  auto [outRead, outWrite] = makePipe();
  auto [errRead, errWrite] = makePipe();
  pid_ = spawn(arguments, changes, outWrite, errWrite);
  pidFd_ = UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
  out_.fd = std::move(outRead);
  err_.fd = std::move(errRead);
}

ChildProcess::~ChildProcess() {
  if (!status_) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
}

bool ChildProcess::waitForOut(std::string_view text, std::chrono::milliseconds deadline) {
  return waitFor(out_, text, deadline);
}

bool ChildProcess::waitForErr(std::string_view text, std::chrono::milliseconds deadline) {
  return waitFor(err_, text, deadline);
}

bool ChildProcess::waitFor(const Stream& stream, std::string_view text,
                           std::chrono::milliseconds deadline) {
  const TimePoint end = std::chrono::steady_clock::now() + deadline;
  while (stream.text.find(text) == std::string::npos) {
    if (!stream.fd || std::chrono::steady_clock::now() >= end) {
      return false;
    }
    pump(end);
  }
  return true;
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds deadline) {
  const TimePoint end = std::chrono::steady_clock::now() + deadline;
  while (!status_ && std::chrono::steady_clock::now() < end) {
    pump(end);
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == pid_) {
      status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      drain(out_);
      drain(err_);
    }
  }
  return status_;
}

void ChildProcess::signal(int number) const {
  ::kill(pid_, number);
}

// Sleeps until the child writes, closes a stream or ends, and takes in what it wrote.
void ChildProcess::pump(TimePoint end) {
  std::array<pollfd, 3> sources{{{out_.fd.get(), POLLIN, 0},
                                 {err_.fd.get(), POLLIN, 0},
                                 {status_ ? -1 : pidFd_.get(), POLLIN, 0}}};
  ::poll(sources.data(), sources.size(), millisecondsUntil(end));
  drain(out_);
  drain(err_);
}

void ChildProcess::drain(Stream& stream) {
  std::array<char, 65536> buffer{};
  while (stream.fd) {
    const ssize_t count = ::read(stream.fd.get(), buffer.data(), buffer.size());
    if (count > 0) {
      stream.text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0) {
      stream.fd.reset();
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace vendril
