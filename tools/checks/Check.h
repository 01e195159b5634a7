#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/PropertyList.h"

namespace vendril::tools {

/// How much a finding matters.
enum class Level {
  ok,
  /// Worth knowing; nothing is wrong.
  note,
  /// Links arrive, but not everything is as it should be.
  warning,
  /// Links do not arrive, or not as they should.
  error
};

std::string_view nameOf(Level level);

/// One finding about the installation.
struct Check {
  /// What was looked at; stable, for programs.
  std::string name;
  /// What was found; stable, for programs.
  std::string verdict;
  Level level = Level::ok;
  /// The same in a sentence.
  std::string summary;
  /// The shell command that mends it; nothing when nothing is wrong or no command can.
  std::optional<std::string> remedy;
  PropertyList::Dictionary details;

  /// Puts another finding in the place of what was expected.
  void find(std::string otherVerdict, Level otherLevel, std::string otherSummary);
};

/// The gravest level among the findings.
Level worstOf(const std::vector<Check>& checks);

/// The verdict on the whole installation: "healthy", "degraded" or "broken".
std::string_view overallVerdict(const std::vector<Check>& checks);

}  // namespace vendril::tools
