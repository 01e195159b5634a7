#include "tools/checks/SessionCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace vendril::tools {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// The bus that systemd makes for a user who has logged in, whatever the environment says.
std::string busOfUser(uid_t user) {
  const std::string path = "/run/user/" + std::to_string(user) + "/bus";
  struct stat status {};
  const bool isThere = stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
  return isThere ? "unix:path=" + path : "";
}

/// The variable that leads to the session of the user with this number, for a shell command. The
/// number comes from the environment, which may hold anything.
std::string runtimeDirectoryOf(const std::string& userId) {
  const bool isNumber =
      !userId.empty() && userId.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? " XDG_RUNTIME_DIR=/run/user/" + userId : "";
}

Check withoutBus(const SessionFacts& facts) {
  Check check{"session", "no-bus", Level::error, "", std::nullopt, {}};
  if (facts.bus == Bus::State::unreachable) {
    check.verdict = "bus-unreachable";
    check.summary = "the session bus cannot be reached: " + facts.busError;
  } else {
    check.summary =
        "there is no session bus here; look from inside the desktop session of the user";
  }
  if (!facts.likelyBus.empty()) {
    check.remedy = "export DBUS_SESSION_BUS_ADDRESS=" + shellWord(facts.likelyBus);
  }
  return check;
}

}  // namespace

SessionFacts sessionFacts(const Surroundings& surroundings, const Bus& bus) {
  SessionFacts facts;
  facts.bus = bus.state;
  facts.busError = bus.error;
  if (geteuid() == 0) {
    facts.sudoUser = variable("SUDO_USER");
    facts.sudoUserId = variable("SUDO_UID");
  }
  if (bus.state != Bus::State::reached) {
    facts.likelyBus = busOfUser(getuid());
  }
  facts.command = surroundings.command;
  return facts;
}

Check sessionCheck(const SessionFacts& facts) {
  if (!facts.sudoUser.empty() && facts.sudoUser != "root") {
    return {"session",
            "other-user",
            Level::warning,
            "this looks at the session of root, not at that of " + facts.sudoUser,
            "sudo -u " + shellWord(facts.sudoUser) + runtimeDirectoryOf(facts.sudoUserId) + " " +
                facts.command + " status",
            {{"user", facts.sudoUser}}};
  }
  if (facts.bus != Bus::State::reached) {
    return withoutBus(facts);
  }
  return {"session", "reached", Level::ok, "the session bus answers", std::nullopt, {}};
}

}  // namespace vendril::tools
