#include "tools/checks/Check.h"

#include <algorithm>
#include <utility>

namespace vendril::tools {

std::string_view nameOf(Level level) {
  switch (level) {
    case Level::ok:
      return "ok";
    case Level::note:
      return "note";
    case Level::warning:
      return "warning";
    case Level::error:
      break;
  }
  return "error";
}

void Check::find(std::string otherVerdict, Level otherLevel, std::string otherSummary) {
  verdict = std::move(otherVerdict);
  level = otherLevel;
  summary = std::move(otherSummary);
}

Level worstOf(const std::vector<Check>& checks) {
  Level worst = Level::ok;
  for (const Check& check : checks) {
    worst = std::max(worst, check.level);
  }
  return worst;
}

std::string_view overallVerdict(const std::vector<Check>& checks) {
  switch (worstOf(checks)) {
    case Level::error:
      return "broken";
    case Level::warning:
      return "degraded";
    default:
      return "healthy";
  }
}

}  // namespace vendril::tools
