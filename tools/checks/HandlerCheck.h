#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// Who opens the links of one scheme.
struct HandlerFacts {
  std::string scheme;
  /// Whether it is the agent.
  bool isRegistered = true;
  /// The desktop's default handler; nothing when there is none.
  std::optional<std::string> handler;
  /// Everybody who could be it, the agent included.
  std::vector<std::string> candidates;
  std::string remedy;
};

HandlerFacts handlerFacts(const Surroundings& surroundings, const std::string& scheme);

/// "default", "other-handler" or "no-handler"; the check's name is "handler-" and the scheme.
Check handlerCheck(const HandlerFacts& facts);

/// One of the user's lists of default applications.
struct AssociationsFacts {
  std::string path;
  bool isReadable = true;
  /// Whether it cannot be read because the user, whose it is, has taken the right from herself.
  bool isOwnWithoutRight = false;
  /// The number and the text of the first line that does not parse.
  std::size_t badLine = 0;
  std::string badText;
};

/// The list that does not parse or, when all do, the general one. Nothing without a home.
std::optional<AssociationsFacts> associationsFacts(const Surroundings& surroundings);

/// "readable", "unreadable" or "malformed".
Check associationsCheck(const AssociationsFacts& facts);

}  // namespace vendril::tools
