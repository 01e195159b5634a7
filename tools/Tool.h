#pragma once

#include <string>

#include "platform/freedesktop/XdgPaths.h"
#include "tools/Text.h"
#include "tools/ToolHost.h"
#include "tools/Transcript.h"

namespace vendril::tools {

/// What every command works with. The referenced objects outlive it.
struct Tool {
  ToolHost& host;
  Transcript& transcript;
  Style style;
  /// How a shell calls this tool.
  std::string command;
};

/// The installation that is looked at, and the desktop around it.
struct Surroundings {
  /// The name under which the desktop and the bus know the agent.
  std::string id;
  /// The path of the agent's program.
  std::string program;
  /// How a shell calls this tool.
  std::string command;
  XdgPaths paths;

  static Surroundings of(const Tool& tool);

  /// The installation's root: the program's directory's parent.
  std::string prefix() const;
  /// The command that puts the installation's files back in their places.
  std::string reinstallCommand() const;
  /// `command` with `arguments`.
  std::string mendingBy(const std::string& arguments) const { return command + " " + arguments; }
};

/// True when both paths lead to the same file.
bool isSameFile(const std::string& one, const std::string& other);

/// What has to stand before a command that changes `directory`: "sudo ", or nothing.
std::string rightsFor(const std::string& directory);

/// How a shell calls the running tool: by its name when that is what PATH finds, else by its path.
std::string commandOfThisTool();

}  // namespace vendril::tools
