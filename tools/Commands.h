#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tools/Answer.h"
#include "tools/Tool.h"

namespace vendril::tools {

// What reads leaves no trace: not a file, not a folder, not a process.

/// The health of the installation: one finding for each thing that a link depends on.
Answer status(const Tool& tool);

/// What the agent would do with the link, and the request that it would send.
Answer explain(const Tool& tool, const std::string& link);

/// Hands the link to the agent over the bus, which starts it when it is not running, and waits up
/// to `limit` until the agent has taken it.
Answer open(const Tool& tool, const std::string& link, std::chrono::milliseconds limit);

/// The client-info report as a portal would get it now.
Answer report(const Tool& tool, bool skipSearch);

/// The published configuration that is in effect.
Answer showConfiguration(const Tool& tool);
/// Writes the configuration that is in effect, with `changes`, each "KEY=VALUE", into the file.
Answer saveConfiguration(const Tool& tool, const std::vector<std::string>& changes);
Answer removeConfiguration(const Tool& tool);
/// Stores the agent's own name and version when the file's version is another.
Answer updateConfigurationVersion(const Tool& tool);

/// Makes the agent the default handler of all its schemes.
Answer registerSchemes(const Tool& tool);
/// Makes another application the default handler of `schemes`, or of all when there are none.
Answer unregisterSchemes(const Tool& tool, const std::vector<std::string>& schemes);

Answer showLoginItem(const Tool& tool);
Answer setLoginItem(const Tool& tool, bool isOn);
/// Removes the items that earlier installations left behind.
Answer cleanLoginItems(const Tool& tool);

/// The agent's last `count` lines, from wherever they are.
Answer showLog(const Tool& tool, unsigned count);
/// Prints those, and then each new one, until it is interrupted. Returns the exit status.
int followLog(const Tool& tool, unsigned count);

}  // namespace vendril::tools
