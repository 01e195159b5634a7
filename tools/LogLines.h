#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vendril::tools {

/// One record of the agent's log.
struct LogLine {
  /// Local time, "yyyy-MM-dd HH:mm:ss.SSS"; empty when it is not known.
  std::string time;
  /// The process that wrote it; empty when it is not known.
  std::string process;
  std::string message;
};

/// A line of `journalctl --output=json`; nothing when it is none. A message that is not UTF-8 comes
/// as an array of bytes there.
std::optional<LogLine> fromJournal(const std::string& line);

/// A line of the log file, "[TIME] MESSAGE". One without a time belongs to the record before it.
LogLine fromLogFile(const std::string& line);

/// A record "TIME vendril[PROCESS] MESSAGE" as the agent writes it to its standard error; nothing
/// for a line of somebody else. A later line of a record begins with a tab.
std::optional<LogLine> fromStandardError(const std::string& line);

/// The record as the agent would write it to its standard error.
std::string lineText(const LogLine& line);

}  // namespace vendril::tools
