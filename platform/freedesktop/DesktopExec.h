#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vendril {

/// What came of reading the value of an `Exec` key: the program that it names, or why it names
/// none.
struct ExecProgram {
  std::optional<std::string> program;
  std::string error;
};

/// The program that `exec`, the value of a desktop entry's `Exec` key, starts, as it is written
/// there: a path, or a name to be found on PATH. Quoting is read as GLib's launchers read it, and
/// field codes count as nothing. A program that `env` is told to start, with variables and no
/// options, is that program and not `env`.
ExecProgram programOfExec(const std::string& exec);

/// The value of an `Exec` key that starts the program at `path` without arguments, whatever
/// characters the path has.
std::string execForProgram(std::string_view path);

/// The absolute path of the executable regular file that `program` means: itself when it is
/// absolute, else the first of its name on PATH. Nothing when there is none.
std::optional<std::string> findExecutable(const std::string& program);

}  // namespace vendril
