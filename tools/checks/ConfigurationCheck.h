#pragma once

#include <optional>
#include <string>

#include "tools/Tool.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// What the conferencing client has published about itself.
struct ConfigurationFacts {
  enum class File { noHome, missing, unreadable, malformed, published };
  enum class Client { unnamed, missing, notExecutable, found };

  File file = File::published;
  /// Where the file is or should be; empty without a home.
  std::string path;
  /// Whether the file is the user's own, and so its permissions.
  bool isFileOwn = true;
  /// The record that is in effect: the file's, or the built-in default.
  PropertyList::Dictionary record;
  std::string executablePath;
  Client client = Client::found;
  /// Whether the executable is the user's own.
  bool isClientOwn = true;
};

ConfigurationFacts configurationFacts(const Tool& tool);

/// "published", "missing", "unreadable", "malformed" or "no-home".
Check configurationCheck(const ConfigurationFacts& facts);

/// "found", "not-executable", "missing" or "unnamed".
Check clientCheck(const ConfigurationFacts& facts);

}  // namespace vendril::tools
