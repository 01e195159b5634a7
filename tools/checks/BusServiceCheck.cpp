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

/// `exec` for a reader of desktop entries: the bus takes a percent sign as it stands.
std::string withPercentSignsDoubled(const std::string& exec) {
  std::string text;
  for (const char c : exec) {
    text.append(c == '%' ? 2 : 1, c);
  }
  return text;
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
  const ExecProgram program = programOfExec(withPercentSignsDoubled(service.exec.value_or("")));
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

/// What is wrong with a service, in a word and in a sentence.
struct Fault {
  const char* verdict;
  std::string summary;
};

/// What is wrong with the file; nothing when it is in order.
std::optional<Fault> faultOf(const BusServiceFacts& facts,
                             const BusServiceFacts::Service& service) {
  if (!service.name || !service.exec) {
    return Fault{"malformed", service.path + " is no service of the bus"};
  }
  if (*service.name != facts.id) {
    return Fault{"wrong-name", service.path + " is about " + *service.name};
  }
  if (!service.program) {
    return Fault{"program-missing",
                 service.path + " starts '" + *service.exec + "', which is not there"};
  }
  if (!isSameFile(*service.program, facts.program)) {
    return Fault{"other-program",
                 service.path + " starts " + *service.program + ", another installation"};
  }
  return std::nullopt;
}

/// The value of an `Exec` key that makes the bus start `program`. The bus splits it as a shell
/// does, but knows neither field codes nor the shell's escapes of control characters.
std::string execOf(const std::string& program) {
  const GCharPtr quoted(g_shell_quote(program.c_str()));
  const bool isBare = shellWord(program) == program;
  const GKeyFilePtr file(g_key_file_new());
  g_key_file_set_string(file.get(), kGroup, "Exec", isBare ? program.c_str() : quoted.get());
  return GCharPtr(g_key_file_get_value(file.get(), kGroup, "Exec", nullptr)).get();
}

/// The command that does `change` to the user's services and makes the bus read them.
std::string changing(const BusServiceFacts& facts, const std::string& change) {
  return fmt::format("mkdir -p {} && {} && {}", shellWord(facts.usersDirectory), change,
                     reloadCommand());
}

std::string usersFile(const BusServiceFacts& facts) {
  return shellWord(facts.usersDirectory + "/" + facts.id + ".service");
}

/// The command that writes the user a service that needs no systemd. What is there goes first: to
/// write through a link would change the file that it leads to, or fail.
std::string writing(const BusServiceFacts& facts) {
  return changing(
      facts,
      fmt::format(R"(rm -f {0} && printf '[D-BUS Service]\nName=%s\nExec=%s\n' {1} {2} > {0})",
                  usersFile(facts), facts.id, shellWord(execOf(facts.program))));
}

/// The command that gives the user a service that works, and makes the bus read it.
std::string provision(const BusServiceFacts& facts) {
  const bool isOwn = facts.service && isSameFile(facts.service->path, facts.ownPath);
  if (isOwn || (facts.own && faultOf(facts, *facts.own))) {
    return facts.reinstallCommand;
  }
  if (!facts.own || facts.ownUnit == BusServiceFacts::Unit::missing) {
    return writing(facts);
  }
  return changing(facts, fmt::format("ln -sf {} {}", shellWord(facts.ownPath), usersFile(facts)));
}

/// The command for a service whose unit systemd does not find. Where the installation's own file
/// counts in its own place, systemd looks for the units beside it too.
std::string provisionWithoutUnit(const BusServiceFacts& facts) {
  const bool isInOwnPlace = isSameFile(fs::path(facts.service->path).parent_path(),
                                       fs::path(facts.ownPath).parent_path());
  return isInOwnPlace ? facts.reinstallCommand : writing(facts);
}

Check finding(const char* verdict, std::string summary, std::string remedy) {
  return {"bus-service", verdict, Level::error, std::move(summary), std::move(remedy), {}};
}

std::optional<Check> faultOfUnit(const BusServiceFacts& facts) {
  const std::string unit = facts.service->unit.value_or("");
  if (facts.unit == BusServiceFacts::Unit::missing) {
    return finding("unit-missing",
                   "systemd does not find " + unit + ", through which the bus starts the agent",
                   provisionWithoutUnit(facts));
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
  if (const auto fault = faultOf(facts, *facts.service)) {
    return finding(fault->verdict, fault->summary, provision(facts));
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
  if (fileKindAt(facts.ownPath) == FileKind::other) {
    facts.own = readService(facts.ownPath);
    facts.ownUnit = unitOf(*facts.own, surroundings.paths);
  }
  facts.reinstallCommand = surroundings.reinstallCommand();
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
