#pragma once

#include <string>
#include <vector>

#include "config/JsonWriter.h"

namespace vendril::tools {

/// The exit statuses of the command.
enum ExitStatus {
  kDone = 0,
  /// It did not work, or something is broken.
  kFailed = 1,
  /// The command line cannot be understood.
  kMisused = 2,
  /// The agent does not answer in time.
  kNoAnswer = 3
};

/// What a command has to say.
struct Answer {
  /// For programs. Values may be of any kind.
  JsonMembers json;
  /// For people; printable already.
  std::string text;
  int status = kDone;
  /// What the agent's classes logged on the way.
  std::vector<std::string> log;
};

/// A JSON object, with a line feed at its end. A text that is not UTF-8 stands there
/// escaped, and a value that JSON has no form for as the log would show it.
std::string jsonText(const JsonMembers& members);

/// `values` as an array.
PropertyList arrayOf(const std::vector<std::string>& values);

}  // namespace vendril::tools
