#include "tools/checks/DesktopEntryCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "platform/FileSystem.h"
#include "platform/freedesktop/HandlerLookup.h"
#include "platform/freedesktop/InstalledApplications.h"
#include "platform/freedesktop/MimeAppsList.h"

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

DesktopEntryFacts::Entry readEntry(const std::string& path, const std::string& name,
                                   const std::vector<std::string>& schemes) {
  DesktopEntryFacts::Entry facts;
  facts.path = path;
  const std::optional<DesktopEntry> entry = DesktopEntry::read(path);
  facts.parses = entry && entry->isApplication();
  if (!facts.parses) {
    return facts;
  }
  facts.isHidden = entry->isHidden();
  const DesktopEntry::Program program = entry->program();
  facts.program = program.path;
  facts.programError = program.error;
  const std::vector<std::string> types = splitNonEmpty(entry->string("MimeType").value_or(""), ';');
  const auto cache = MimeAppsList::read(fs::path(path).parent_path() / "mimeinfo.cache");
  for (const std::string& scheme : schemes) {
    const std::string type = handlerType(scheme);
    if (std::find(types.begin(), types.end(), type) == types.end()) {
      facts.undeclared.push_back(scheme);
    }
    const auto cached =
        cache ? cache->applications(MimeAppsList::kMimeCache, type) : std::vector<std::string>();
    facts.isCached =
        facts.isCached && std::find(cached.begin(), cached.end(), name) != cached.end();
  }
  return facts;
}

Check finding(const char* verdict, std::string summary, std::string remedy) {
  return {"desktop-entry", verdict, Level::error, std::move(summary), std::move(remedy), {}};
}

/// The command that puts the installation's own entry before all others.
std::string linking(const DesktopEntryFacts& facts) {
  return fmt::format("mkdir -p {0} && ln -sf {1} {0}/ && update-desktop-database {0}",
                     shellWord(facts.usersDirectory), shellWord(facts.ownPath));
}

Check missing(const DesktopEntryFacts& facts) {
  if (!facts.isOwnThere) {
    return finding("missing",
                   "no data directory has the entry " + fs::path(facts.ownPath).filename().string(),
                   facts.reinstallCommand);
  }
  return finding("invisible",
                 fs::path(facts.ownPath).parent_path().parent_path().string() +
                     " is not in XDG_DATA_DIRS, so the desktop does not see " + facts.ownPath,
                 linking(facts));
}

/// The command that lets the installation's own entry count, or writes that entry anew. What stands
/// in its way is kept: a user's file may be of use yet, and any other is not the agent's to remove.
std::string replacing(const DesktopEntryFacts& facts) {
  const std::string& path = facts.entry->path;
  if (isSameFile(path, facts.ownPath)) {
    return facts.reinstallCommand;
  }
  if (isSameFile(fs::path(path).parent_path(), facts.usersDirectory)) {
    return fmt::format("mv --backup=numbered {} {}", shellWord(path), shellWord(path + ".bad"));
  }
  return facts.isOwnThere ? linking(facts) : facts.reinstallCommand;
}

Check judge(const DesktopEntryFacts& facts, const DesktopEntryFacts::Entry& entry) {
  if (!entry.parses) {
    return finding("malformed", entry.path + " is no entry of an application", replacing(facts));
  }
  if (entry.isHidden) {
    return finding("hidden", entry.path + " says that the agent is to be treated as removed",
                   replacing(facts));
  }
  if (!entry.program) {
    return finding("program-missing", entry.path + ": " + entry.programError, replacing(facts));
  }
  if (!isSameFile(*entry.program, facts.program)) {
    Check check = finding("other-program",
                          entry.path + " starts " + *entry.program + ", another installation",
                          replacing(facts));
    check.level = Level::warning;
    return check;
  }
  if (!entry.undeclared.empty()) {
    return finding(
        "scheme-missing",
        fmt::format("{} does not declare {}", entry.path, fmt::join(entry.undeclared, ", ")),
        replacing(facts));
  }
  if (!entry.isCached) {
    const std::string directory = fs::path(entry.path).parent_path();
    Check check = finding("not-cached", "the desktop's cache of " + directory + " is out of date",
                          rightsFor(directory) + "update-desktop-database " + shellWord(directory));
    check.level = Level::warning;
    return check;
  }
  return {"desktop-entry", "valid", Level::ok, entry.path, std::nullopt, {}};
}

}  // namespace

DesktopEntryFacts desktopEntryFacts(const Surroundings& surroundings,
                                    const std::vector<std::string>& schemes) {
  const std::string name = surroundings.id + ".desktop";
  DesktopEntryFacts facts;
  facts.program = surroundings.program;
  facts.ownPath = surroundings.prefix() + "/share/applications/" + name;
  facts.isOwnThere = fileKindAt(facts.ownPath) == FileKind::other;
  facts.usersDirectory = surroundings.paths.dataHome + "/applications";
  facts.reinstallCommand = surroundings.reinstallCommand();
  const InstalledApplications applications(surroundings.paths);
  for (std::size_t i = 0; i < applications.directories().size() && !facts.entry; ++i) {
    if (applications.hasEntry(i, name)) {
      facts.entry = readEntry(applications.directories()[i] + "/" + name, name, schemes);
    }
  }
  return facts;
}

Check desktopEntryCheck(const DesktopEntryFacts& facts) {
  Check check = facts.entry ? judge(facts, *facts.entry) : missing(facts);
  check.details.emplace("expected", facts.ownPath);
  if (facts.entry) {
    check.details.emplace("path", facts.entry->path);
    if (facts.entry->program) {
      check.details.emplace("program", *facts.entry->program);
    }
  }
  return check;
}

}  // namespace vendril::tools
