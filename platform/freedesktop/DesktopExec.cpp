#include "platform/freedesktop/DesktopExec.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/freedesktop/GlibPtr.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {
namespace {

/// Takes the field codes out of `exec` and turns each doubled percent sign into one.
std::string withoutFieldCodes(const std::string& exec) {
  std::string text;
  for (std::size_t i = 0; i < exec.size(); ++i) {
    if (exec[i] != '%') {
      text += exec[i];
      continue;
    }
    ++i;
    if (i < exec.size() && exec[i] == '%') {
      text += '%';
    }
  }
  return text;
}

bool isEnv(std::string_view program) {
  return program == "env" || program.ends_with("/env");
}

bool isAssignment(std::string_view argument) {
  return argument.find('=') != std::string_view::npos && !argument.starts_with('-');
}

/// The program among the arguments, the first of which may be `env`.
std::string programOf(const std::vector<std::string>& arguments) {
  if (!isEnv(arguments.front())) {
    return arguments.front();
  }
  const auto started = std::find_if_not(arguments.begin() + 1, arguments.end(), isAssignment);
  const bool isPlain = started != arguments.end() && !started->starts_with('-');
  return isPlain ? *started : arguments.front();
}

bool isExecutable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

/// True when `path` means the same in and out of quotes.
bool needsNoQuotes(std::string_view path) {
  return std::all_of(path.begin(), path.end(), [](char c) {
    return g_ascii_isalnum(c) != 0 ||
           std::string_view("/._-+,:@%").find(c) != std::string_view::npos;
  });
}

}  // namespace

ExecProgram programOfExec(const std::string& exec) {
  gint count = 0;
  gchar** words = nullptr;
  GErrorSlot error;
  if (g_shell_parse_argv(withoutFieldCodes(exec).c_str(), &count, &words, error.out()) == FALSE) {
    return {std::nullopt, error.message()};
  }
  const GStrvPtr owner(words);
  return {programOf({words, words + count}), ""};
}

std::string execForProgram(std::string_view path) {
  const bool quoted = !needsNoQuotes(path);
  std::string exec(quoted ? "\"" : "");
  for (const char c : path) {
    if (quoted && std::string_view("\"`$\\").find(c) != std::string_view::npos) {
      exec += '\\';
    } else if (c == '%') {
      exec += '%';
    }
    exec += c;
  }
  return exec + (quoted ? "\"" : "");
}

std::optional<std::string> findExecutable(const std::string& program) {
  if (program.find('/') != std::string::npos) {
    return program.starts_with('/') && isExecutable(program) ? std::optional(program)
                                                             : std::nullopt;
  }
  const char* path = std::getenv("PATH");
  for (std::string candidate : splitNonEmpty(path != nullptr ? path : "", ':')) {
    while (candidate.ends_with('/')) {
      candidate.pop_back();
    }
    candidate.append("/").append(program);
    if (candidate.starts_with('/') && isExecutable(candidate)) {
      return candidate;
    }
  }
  return std::nullopt;
}

}  // namespace vendril
