#include "tools/checks/BusServiceCheck.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/freedesktop/BoundedFile.h"
#include "platform/freedesktop/DesktopExec.h"

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGroup = "D-BUS Service";
constexpr const char* kServices = "/dbus-1/services/";

std::string runtimeDirectory() {
  const char* directory = std::getenv("XDG_RUNTIME_DIR");
  return directory != nullptr ? directory : "";
}

bool isThere(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

/// The first of `directories` that has `name` below `middle`; nothing when none has.
std::optional<std::string> firstFile(const std::vector<std::string>& directories,
                                     const std::string& middle, const std::string& name) {
  for (const std::string& directory : directories) {
    std::string path = directory;
    path.append(middle).append(name);
    if (!directory.empty() && isThere(path)) {
      return path;
    }
  }
  return std::nullopt;
}

/// The runtime directory, the user's data directory and the system's, as the bus orders them.
std::vector<std::string> directoriesOfServices(const XdgPaths& paths) {
  std::vector<std::string> directories{runtimeDirectory(), paths.dataHome};
  directories.insert(directories.end(), paths.dataDirs.begin(), paths.dataDirs.end());
  return directories;
}

/// As systemd.unit(5) lists them, those that people and packages use.
std::vector<std::string> directoriesOfUnits(const XdgPaths& paths) {
  std::vector<std::string> directories{paths.configHome, "/etc", runtimeDirectory(), "/run",
                                       paths.dataHome};
  directories.insert(directories.end(), paths.dataDirs.begin(), paths.dataDirs.end());
  directories.insert(directories.end(), {"/usr/local/lib", "/usr/lib"});
  return directories;
}

std::optional<std::string> valueOf(GKeyFile* file, const char* key) {
  const GCharPtr value(g_key_file_get_string(file, kGroup, key, nullptr));
  return value ? std::optional<std::string>(value.get()) : std::nullopt;
}

BusServiceFacts::Service readService(const std::string& path) {
  constexpr std::size_t kLargest = 65536;
  BusServiceFacts::Service service;
  service.path = path;
  const std::optional<std::string> text = readBoundedFile(path, kLargest);
  const GKeyFilePtr file(g_key_file_new());
  if (!text || g_key_file_load_from_data(file.get(), text->data(), text->size(), G_KEY_FILE_NONE,
                                         nullptr) == FALSE) {
    return service;
  }
  service.name = valueOf(file.get(), "Name");
  service.exec = valueOf(file.get(), "Exec");
  service.unit = valueOf(file.get(), "SystemdService");
  const ExecProgram program = programOfExec(service.exec.value_or(""));
  service.program = program.program ? findExecutable(*program.program) : std::nullopt;
  return service;
}

/// A bus starts services through systemd only where there is one for the user.
BusServiceFacts::Unit unitOf(const BusServiceFacts::Service& service, const XdgPaths& paths) {
  if (!service.unit || !isThere(runtimeDirectory() + "/systemd/private")) {
    return BusServiceFacts::Unit::notNeeded;
  }
  const auto path = firstFile(directoriesOfUnits(paths), "/systemd/user/", *service.unit);
  if (!path) {
    return BusServiceFacts::Unit::missing;
  }
  std::error_code ignored;
  const bool isMasked = fs::canonical(*path, ignored) == "/dev/null" ||
                        (fs::is_regular_file(*path, ignored) && fs::is_empty(*path, ignored));
  return isMasked ? BusServiceFacts::Unit::masked : BusServiceFacts::Unit::found;
}

/// The command that makes the bus read its services again.
std::string reloadCommand() {
  return "gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus "
         "--method org.freedesktop.DBus.ReloadConfig";
}

/// The command that gives the user a service that works, and makes the bus read it.
std::string provision(const BusServiceFacts& facts) {
  const std::string directory = shellWord(facts.usersDirectory);
  const std::string file = shellWord(facts.usersDirectory + "/" + facts.id + ".service");
  if (facts.isOwnThere) {
    return fmt::format("mkdir -p {} && ln -sf {} {} && {}", directory, shellWord(facts.ownPath),
                       file, reloadCommand());
  }
  return fmt::format(
      R"(mkdir -p {} && printf '[D-BUS Service]\nName=%s\nExec=%s\n' {} {} > {} && {})", directory,
      facts.id, shellWord(facts.program), file, reloadCommand());
}

Check finding(const char* verdict, std::string summary, std::string remedy) {
  return {"bus-service", verdict, Level::error, std::move(summary), std::move(remedy), {}};
}

/// What is wrong with the file; nothing when it is in order.
std::optional<Check> faultOf(const BusServiceFacts& facts,
                             const BusServiceFacts::Service& service) {
  if (!service.name || !service.exec) {
    return finding("malformed", service.path + " is no service of the bus", provision(facts));
  }
  if (*service.name != facts.id) {
    return finding("wrong-name", service.path + " is about " + *service.name, provision(facts));
  }
  if (!service.program) {
    return finding("program-missing",
                   service.path + " starts '" + *service.exec + "', which is not there",
                   provision(facts));
  }
  if (!isSameFile(*service.program, facts.program)) {
    return finding("other-program",
                   service.path + " starts " + *service.program + ", another installation",
                   provision(facts));
  }
  return std::nullopt;
}

std::optional<Check> faultOfUnit(const BusServiceFacts& facts) {
  const std::string unit = facts.service->unit.value_or("");
  if (facts.unit == BusServiceFacts::Unit::missing) {
    return finding("unit-missing",
                   "systemd does not find " + unit + ", through which the bus starts the agent",
                   provision(facts));
  }
  if (facts.unit == BusServiceFacts::Unit::masked) {
    return finding("unit-masked", unit + " is masked, so systemd does not start the agent",
                   "systemctl --user unmask " + shellWord(unit));
  }
  return std::nullopt;
}

Check judge(const BusServiceFacts& facts) {
  const bool isKnown = facts.isKnown.value_or(facts.service.has_value());
  if (!facts.service) {
    return isKnown ? Check{"bus-service", "known", Level::ok, "the bus can start the agent",
                           std::nullopt,  {}}
                   : finding("missing",
                             "no service tells the bus how to start the agent, so a link that the "
                             "desktop sends over the bus is lost unless the agent is running",
                             provision(facts));
  }
  if (auto fault = faultOf(facts, *facts.service)) {
    return *fault;
  }
  if (!isKnown) {
    return finding("not-loaded", "the bus does not know " + facts.service->path + " yet",
                   reloadCommand());
  }
  if (auto fault = faultOfUnit(facts)) {
    return *fault;
  }
  return {"bus-service", "known", Level::ok, facts.service->path, std::nullopt, {}};
}

}  // namespace

BusServiceFacts busServiceFacts(const Surroundings& surroundings, const Bus& bus) {
  const std::string name = surroundings.id + ".service";
  BusServiceFacts facts;
  facts.id = surroundings.id;
  facts.program = surroundings.program;
  facts.ownPath = surroundings.prefix() + "/share" + kServices + name;
  facts.isOwnThere = fileKindAt(facts.ownPath) == FileKind::other;
  facts.usersDirectory = surroundings.paths.dataHome + "/dbus-1/services";
  const auto path = firstFile(directoriesOfServices(surroundings.paths), kServices, name);
  if (path) {
    facts.service = readService(*path);
    facts.unit = unitOf(*facts.service, surroundings.paths);
  }
  if (bus.state == Bus::State::reached) {
    facts.isKnown = bus.canStart(surroundings.id);
  }
  return facts;
}

Check busServiceCheck(const BusServiceFacts& facts) {
  Check check = judge(facts);
  check.details.emplace("expected", facts.ownPath);
  if (facts.service) {
    check.details.emplace("path", facts.service->path);
    check.details.emplace("exec", facts.service->exec.value_or(""));
  }
  if (facts.isKnown) {
    check.details.emplace("known", *facts.isKnown);
  }
  return check;
}

}  // namespace vendril::tools
