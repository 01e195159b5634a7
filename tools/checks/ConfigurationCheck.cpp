#include "tools/checks/ConfigurationCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "config/ZQN5PublishedConfiguration.h"
#include "tools/checks/Ownership.h"

namespace vendril::tools {
namespace {

using File = ConfigurationFacts::File;
using Client = ConfigurationFacts::Client;

/// False for what cannot be looked at: it may be there.
bool isMissing(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

File fileAt(const std::optional<std::string>& path) {
  if (!path) {
    return File::noHome;
  }
  if (ZQN5PublishedConfiguration::holdsConfiguration(*path)) {
    return File::published;
  }
  if (isMissing(*path)) {
    return File::missing;
  }
  return access(path->c_str(), R_OK) == 0 ? File::malformed : File::unreadable;
}

Client clientOf(const ZQN5PublishedConfiguration& configuration) {
  const std::string path = configuration.executablePath();
  if (path.empty()) {
    return Client::unnamed;
  }
  if (!configuration.findBreltoOrvanta()) {
    return Client::missing;
  }
  return access(path.c_str(), X_OK) == 0 ? Client::found : Client::notExecutable;
}

}  // namespace

ConfigurationFacts configurationFacts(const Tool& tool) {
  ZQN5PublishedConfiguration configuration(tool.transcript.loggerBlock());
  const std::optional<std::string> path = ZQN5PublishedConfiguration::expectedFilePath();
  configuration.loadWithoutTrace();
  ConfigurationFacts facts;
  facts.file = fileAt(path);
  facts.path = path.value_or("");
  facts.isFileOwn = isOwn(facts.path);
  facts.record = configuration.dictionary();
  facts.executablePath = configuration.executablePath();
  facts.client = clientOf(configuration);
  facts.isClientOwn = isOwn(facts.executablePath);
  return facts;
}

Check configurationCheck(const ConfigurationFacts& facts) {
  Check check{"configuration",
              "published",
              Level::ok,
              facts.path,
              std::nullopt,
              {{"path", facts.path},
               {"record", facts.record},
               {"source", facts.file == File::published ? "file" : "default"}}};
  switch (facts.file) {
    case File::published:
      break;
    case File::missing:
      check.find("missing", Level::warning,
                 facts.path +
                     " is not there: the client has published nothing, and the built-in default "
                     "is reported; start the client once");
      break;
    case File::unreadable:
      check.find("unreadable", Level::error,
                 facts.path + " cannot be read; the built-in default is reported");
      if (facts.isFileOwn) {
        check.remedy = "chmod u+r " + shellWord(facts.path);
      }
      break;
    case File::malformed:
      check.find("malformed", Level::error,
                 facts.path +
                     " holds no published configuration; the built-in default is reported until "
                     "the client publishes anew");
      check.remedy =
          "mv -T --backup=numbered " + shellWord(facts.path) + " " + shellWord(facts.path + ".bad");
      break;
    case File::noHome:
      check.find("no-home", Level::error, "neither a home directory nor XDG_CONFIG_HOME is known");
      break;
  }
  return check;
}

Check clientCheck(const ConfigurationFacts& facts) {
  Check check{"client",     "found",
              Level::ok,    facts.executablePath,
              std::nullopt, {{"path", facts.executablePath}}};
  switch (facts.client) {
    case Client::found:
      break;
    case Client::notExecutable:
      check.find("not-executable", Level::warning,
                 facts.executablePath + " is there but cannot be run");
      if (facts.isClientOwn) {
        check.remedy = "chmod +x -- " + shellWord(facts.executablePath);
      }
      break;
    case Client::missing:
      check.find("missing", Level::error,
                 facts.executablePath +
                     " is not there; until the client is installed again, the portal is told that "
                     "it can do nothing");
      break;
    case Client::unnamed:
      check.find("unnamed", Level::warning,
                 "no executable is published; the portal is told that the client can do nothing");
      break;
  }
  return check;
}

}  // namespace vendril::tools
