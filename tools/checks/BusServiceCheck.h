#pragma once

#include <optional>
#include <string>

#include "tools/Bus.h"
#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// How the bus starts the agent: a link that the desktop sends over the bus has no other way.
struct BusServiceFacts {
  /// The file that tells the bus.
  struct Service {
    std::string path;
    /// Its values; nothing for one that is missing, and for all when the file does not parse.
    std::optional<std::string> name;
    std::optional<std::string> exec;
    std::optional<std::string> unit;
    /// The program that `exec` names; nothing when it is not there.
    std::optional<std::string> program;
  };
  enum class Unit { notNeeded, found, missing, masked };

  std::string id;
  /// The agent's program.
  std::string program;
  /// The first file of the directories in which the bus looks.
  std::optional<Service> service;
  /// Whether the bus knows the service; nothing when there is no bus to ask.
  std::optional<bool> isKnown;
  /// Whether systemd finds the unit that the service names.
  Unit unit = Unit::notNeeded;
  /// Where the file of the installation itself has its place; the file, when it is there, and the
  /// unit that it names.
  std::string ownPath;
  std::optional<Service> own;
  Unit ownUnit = Unit::notNeeded;
  /// The command that puts the installation's files back.
  std::string reinstallCommand;
  /// Where the user's own services lie.
  std::string usersDirectory;
};

BusServiceFacts busServiceFacts(const Surroundings& surroundings, const Bus& bus);

/// "known", "missing", "malformed", "wrong-name", "program-missing", "other-program", "not-loaded",
/// "unit-missing" or "unit-masked".
Check busServiceCheck(const BusServiceFacts& facts);

}  // namespace vendril::tools
