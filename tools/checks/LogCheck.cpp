#include "tools/checks/LogCheck.h"

#include <unistd.h>

#include <filesystem>

#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/FileSystem.h"
#include "platform/freedesktop/JournalSystemLog.h"
#include "tools/checks/Ownership.h"

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

bool isWritableFolder(const fs::path& path) {
  return fileKindAt(path) == FileKind::folder && access(path.c_str(), W_OK | X_OK) == 0;
}

/// The directory or, when it is missing, the nearest one above that is there.
fs::path nearestOf(fs::path path) {
  while (path.has_relative_path() && fileKindAt(path) == FileKind::missing) {
    path = path.parent_path();
  }
  return path;
}

/// The agent creates the directory, and those above it, when it is missing.
LogFacts::Directory stateOf(const fs::path& directory) {
  if (fileKindAt(directory) != FileKind::missing) {
    return isWritableFolder(directory) ? LogFacts::Directory::usable
                                       : LogFacts::Directory::unusable;
  }
  return directory.is_absolute() && isWritableFolder(nearestOf(directory))
             ? LogFacts::Directory::creatable
             : LogFacts::Directory::unusable;
}

std::optional<LogFacts::Obstacle> obstacleTo(const fs::path& directory) {
  if (!directory.is_absolute()) {
    return std::nullopt;
  }
  const fs::path nearest = nearestOf(directory);
  const bool isFolder = fileKindAt(nearest) == FileKind::folder;
  return LogFacts::Obstacle{nearest, isFolder,
                            isFolder ? isOwn(nearest) : isWritableFolder(nearest.parent_path())};
}

/// Nothing that is there is lost: a file that stands in the way gets another name.
std::optional<std::string> remedyFor(const LogFacts& facts) {
  if (!facts.obstacle || !facts.obstacle->isChangeable) {
    return std::nullopt;
  }
  const std::string& path = facts.obstacle->path;
  return facts.obstacle->isFolder
             ? "chmod u+rwx -- " + shellWord(path)
             : "mv -T --backup=numbered -- " + shellWord(path) + " " + shellWord(path + ".bad") +
                   " && mkdir -p -- " + shellWord(facts.directory);
}

std::string publishedDirectory(const PropertyList::Dictionary& record) {
  const auto entry = record.find("LogDirectory");
  const auto* text = entry != record.end() ? entry->second.get<std::string>() : nullptr;
  return text != nullptr ? *text : "";
}

}  // namespace

LogFacts logFacts(const ConfigurationFacts& configuration) {
  LogFacts facts;
  facts.hasJournal = JournalSystemLog::isJournalThere();
  facts.directory = publishedDirectory(configuration.record);
  facts.state = LogFacts::Directory::unnamed;
  if (!facts.directory.empty()) {
    facts.file = ZQN5VendrilAppDelegate().logPath(facts.directory, false).value_or("");
    facts.state = stateOf(facts.directory);
  }
  if (facts.state == LogFacts::Directory::unusable) {
    facts.obstacle = obstacleTo(facts.directory);
  }
  return facts;
}

Check logDirectoryCheck(const LogFacts& facts) {
  Check check{"log-directory", "ready",      Level::ok,
              facts.directory, std::nullopt, {{"path", facts.directory}, {"file", facts.file}}};
  switch (facts.state) {
    case LogFacts::Directory::usable:
      break;
    case LogFacts::Directory::creatable:
      check.find("will-be-created", Level::ok, facts.directory + " is created with the next link");
      break;
    case LogFacts::Directory::unnamed:
      check.find("unnamed", Level::note, "none is published, so there is no log file");
      break;
    case LogFacts::Directory::unusable:
      check.find("not-writable", Level::warning,
                 facts.directory + " cannot be written, so there is no log file");
      check.remedy = remedyFor(facts);
      break;
  }
  return check;
}

Check journalCheck(const LogFacts& facts) {
  if (facts.hasJournal) {
    return {"journal",    "available", Level::ok, "the agent's lines are in the journal",
            std::nullopt, {}};
  }
  return {"journal",    "absent",
          Level::note,  "there is none; the agent's lines go to its standard error",
          std::nullopt, {}};
}

}  // namespace vendril::tools
