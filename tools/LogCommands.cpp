#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <filesystem>

#include "platform/freedesktop/DesktopExec.h"
#include "platform/freedesktop/JournalSystemLog.h"
#include "tools/Bus.h"
#include "tools/Commands.h"
#include "tools/LineReader.h"
#include "tools/LogLines.h"
#include "tools/checks/ConfigurationCheck.h"
#include "tools/checks/LogCheck.h"

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

/// Where the agent's lines are.
struct LogSource {
  enum class Kind { journal, standardError, file, none };

  Kind kind = Kind::none;
  /// The file to read; empty for the journal.
  std::string path;
  /// Why there are no lines, for people.
  std::string reason;
};

const char* nameOf(LogSource::Kind kind) {
  switch (kind) {
    case LogSource::Kind::journal:
      return "journal";
    case LogSource::Kind::standardError:
      return "standard-error";
    case LogSource::Kind::file:
      return "file";
    case LogSource::Kind::none:
      break;
  }
  return "none";
}

bool hasContent(const std::string& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) && fs::file_size(path, ignored) > 0;
}

/// What the standard error of the running agent leads to; nothing when no agent is running.
std::optional<std::string> standardErrorOfAgent(const Surroundings& surroundings) {
  const std::optional<pid_t> agent = Bus::find().ownerOf(surroundings.id);
  if (!agent) {
    return std::nullopt;
  }
  std::error_code ignored;
  return fs::read_symlink("/proc/" + std::to_string(*agent) + "/fd/2", ignored).string();
}

std::string whyNone(const std::string& file, const std::optional<std::string>& standardError) {
  std::string reason = "there is no journal here";
  reason += file.empty() ? ", no log file is published"
                         : ", and the log file " + file +
                               " is missing or empty, as it always is with the GNU C library";
  reason += standardError
                ? "; the agent's lines go to its standard error, which leads to " + *standardError
                : "; the agent is not running, and its lines went to its standard error";
  return reason;
}

LogSource findSource(const Tool& tool) {
  const Surroundings surroundings = Surroundings::of(tool);
  if (JournalSystemLog::isJournalThere() && findExecutable("journalctl")) {
    return {LogSource::Kind::journal, "", ""};
  }
  const std::string file = logFacts(configurationFacts(tool)).file;
  if (hasContent(file)) {
    return {LogSource::Kind::file, file, ""};
  }
  const std::optional<std::string> standardError = standardErrorOfAgent(surroundings);
  if (standardError && hasContent(*standardError)) {
    return {LogSource::Kind::standardError, *standardError, ""};
  }
  return {LogSource::Kind::none, "", whyNone(file, standardError)};
}

/// The program that prints the lines of a source. The journal is asked for all records of the user:
/// one that is not kept on the disk has no part for each user, and `--user` finds nothing there.
std::vector<std::string> readerOf(const LogSource& source, unsigned count, bool follow) {
  std::vector<std::string> command;
  if (source.kind == LogSource::Kind::journal) {
    command = {"journalctl",
               "--quiet",
               "--no-pager",
               "--output=json",
               "--identifier=vendril",
               fmt::format("_UID={}", getuid()),
               fmt::format("--lines={}", count)};
  } else {
    // The lines of others stand in between, so all are read when the last ones are wanted.
    const bool isShared = source.kind == LogSource::Kind::standardError;
    command = {"tail", fmt::format("--lines={}", isShared ? "+1" : std::to_string(count))};
  }
  if (follow) {
    command.emplace_back("--follow");
  }
  if (!source.path.empty()) {
    command.insert(command.end(), {"--", source.path});
  }
  return command;
}

std::optional<LogLine> understand(const LogSource& source, const std::string& line) {
  switch (source.kind) {
    case LogSource::Kind::journal:
      return fromJournal(line);
    case LogSource::Kind::standardError:
      return fromStandardError(line);
    default:
      return fromLogFile(line);
  }
}

std::deque<LogLine> lastLines(const LogSource& source, unsigned count) {
  std::deque<LogLine> lines;
  if (source.kind == LogSource::Kind::none) {
    return lines;
  }
  LineReader reader(readerOf(source, count, false));
  while (const auto text = reader.next()) {
    if (auto line = understand(source, *text)) {
      lines.push_back(std::move(*line));
    }
    if (lines.size() > count) {
      lines.pop_front();
    }
  }
  return lines;
}

}  // namespace

Answer showLog(const Tool& tool, unsigned count) {
  const LogSource source = findSource(tool);
  Answer answer;
  PropertyList::Array records;
  for (const LogLine& line : lastLines(source, count)) {
    records.push_back(PropertyList::Dictionary{
        {"time", line.time}, {"process", line.process}, {"message", line.message}});
    answer.text += lineText(line);
  }
  answer.json = {{"command", "log"},
                 {"verdict", source.kind != LogSource::Kind::none ? "found" : "nowhere"},
                 {"source", nameOf(source.kind)},
                 {"path", source.path},
                 {"summary", source.reason},
                 {"records", records}};
  if (source.kind == LogSource::Kind::none) {
    answer.text = printable(source.reason) + "\n";
    answer.status = kFailed;
  } else if (records.empty()) {
    answer.text = fmt::format("the {} holds no line of the agent yet\n", nameOf(source.kind));
  }
  return answer;
}

int followLog(const Tool& tool, unsigned count) {
  const LogSource source = findSource(tool);
  if (source.kind == LogSource::Kind::none) {
    std::fprintf(stderr, "vendrilctl: %s\n", printable(source.reason).c_str());
    return kFailed;
  }
  LineReader reader(readerOf(source, count, true));
  while (const auto text = reader.next()) {
    if (const auto line = understand(source, *text)) {
      std::fputs(lineText(*line).c_str(), stdout);
      std::fflush(stdout);
    }
  }
  return kDone;
}

}  // namespace vendril::tools
