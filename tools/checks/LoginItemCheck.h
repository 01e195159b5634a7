#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// Whether the agent starts when the user logs in.
struct LoginItemFacts {
  /// An item that an earlier installation left behind.
  struct Stale {
    std::string name;
    /// Where it points to, or why it points nowhere.
    std::string target;
  };

  /// Whether the agent is among the login items.
  bool isOn = true;
  /// The entry of its own; empty when there is none.
  std::string path;
  /// Whether the user has switched that entry off.
  bool isSwitchedOff = false;
  /// Why the entry starts nothing; nothing when it does, or is switched off.
  std::optional<std::string> error;
  std::vector<Stale> stale;
  /// How a shell calls the tool's login-item command.
  std::string command;
};

LoginItemFacts loginItemFacts(const Surroundings& surroundings);

/// "on", "off", "switched-off" or "broken".
Check loginItemCheck(const LoginItemFacts& facts);

/// "none" or "found".
Check staleLoginItemsCheck(const LoginItemFacts& facts);

}  // namespace vendril::tools
