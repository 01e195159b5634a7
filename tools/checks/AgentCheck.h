#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/Bus.h"
#include "tools/Processes.h"
#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// The agent's program and its process.
struct AgentFacts {
  /// The program that this tool belongs to, and whether it is there and can be run.
  std::string program;
  bool isInstalled = true;
  std::string reinstallCommand;
  /// The process that owns the agent's name on the bus.
  std::optional<Process> owner;
  /// Whether it answers a call.
  bool answers = true;
  /// Processes of the program in this session that do not own the name.
  std::vector<Process> strays;
};

/// Asks a running agent for a sign of life and waits for it for two seconds.
AgentFacts agentFacts(const Surroundings& surroundings, const Bus& bus);

/// "installed" or "missing".
Check programCheck(const AgentFacts& facts);

/// "running", "not-running", "not-answering", "other-program", "outdated" or "off-bus".
Check agentCheck(const AgentFacts& facts);

}  // namespace vendril::tools
