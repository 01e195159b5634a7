#pragma once

#include "tools/Bus.h"
#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// Whose session the tool looks at, and whether it reaches it.
struct SessionFacts {
  Bus::State bus = Bus::State::reached;
  std::string busError;
  /// The user who became root by sudo, and her numeric id; empty when nobody did.
  std::string sudoUser;
  std::string sudoUserId;
  /// Where the bus of this user would be, were it named: an address; empty when it is not there.
  std::string likelyBus;
  std::string command;
};

SessionFacts sessionFacts(const Surroundings& surroundings, const Bus& bus);

/// "reached", "other-user", "no-bus" or "bus-unreachable".
Check sessionCheck(const SessionFacts& facts);

}  // namespace vendril::tools
