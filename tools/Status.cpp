#include "tools/Status.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "platform/Bundle.h"
#include "protocol/ZQN5ProtocolHandler.h"
#include "tools/Bus.h"
#include "tools/Commands.h"
#include "tools/checks/AgentCheck.h"
#include "tools/checks/BusServiceCheck.h"
#include "tools/checks/ConfigurationCheck.h"
#include "tools/checks/DesktopEntryCheck.h"
#include "tools/checks/HandlerCheck.h"
#include "tools/checks/LogCheck.h"
#include "tools/checks/LoginItemCheck.h"
#include "tools/checks/SessionCheck.h"

namespace vendril::tools {
namespace {

/// The escape sequences of ECMA-48 that select a colour, and the one that ends it.
constexpr const char* kGreen = "\x1B[32m";
constexpr const char* kYellow = "\x1B[33m";
constexpr const char* kRed = "\x1B[31m";
constexpr const char* kBlue = "\x1B[34m";
constexpr const char* kPlain = "\x1B[0m";

const char* colourOf(Level level) {
  switch (level) {
    case Level::ok:
      return kGreen;
    case Level::note:
      return kBlue;
    case Level::warning:
      return kYellow;
    case Level::error:
      break;
  }
  return kRed;
}

std::string coloured(std::string_view text, Level level, const Style& style) {
  return style.colour ? fmt::format("{}{}{}", colourOf(level), text, kPlain) : std::string(text);
}

std::string row(const Check& check, std::size_t nameWidth, const Style& style) {
  const std::string level = coloured(fmt::format("{:<7}", nameOf(check.level)), check.level, style);
  const std::string summary = printable(check.summary);
  std::string text = fmt::format("  {}  {:<{}}  {}\n", level, check.name, nameWidth, summary);
  if (check.remedy) {
    text += fmt::format("  {:7}  {:<{}}  mend: {}\n", "", "", nameWidth, printable(*check.remedy));
  }
  return text;
}

std::string line(const Check& check) {
  std::string text = fmt::format("{} {} {}: {}\n", nameOf(check.level), check.name, check.verdict,
                                 printable(check.summary));
  if (check.remedy) {
    text += fmt::format("  mend: {}\n", printable(*check.remedy));
  }
  return text;
}

PropertyList jsonOf(const Check& check) {
  PropertyList::Dictionary result{{"check", check.name},
                                  {"verdict", check.verdict},
                                  {"level", nameOf(check.level)},
                                  {"summary", check.summary},
                                  {"details", check.details}};
  if (check.remedy) {
    result.emplace("remedy", *check.remedy);
  }
  return result;
}

/// In the order in which a link meets them.
std::vector<Check> allChecks(const Tool& tool) {
  const Surroundings surroundings = Surroundings::of(tool);
  const auto& schemes = ZQN5ProtocolHandler::sharedInstance().supportedURLSchemes();
  const Bus bus = Bus::find();
  const AgentFacts agent = agentFacts(surroundings, bus);
  std::vector<Check> checks{
      sessionCheck(sessionFacts(surroundings, bus)), programCheck(agent), agentCheck(agent),
      busServiceCheck(busServiceFacts(surroundings, bus)),
      desktopEntryCheck(desktopEntryFacts(surroundings, {schemes.begin(), schemes.end()}))};
  if (const auto associations = associationsFacts(surroundings)) {
    checks.push_back(associationsCheck(*associations));
  }
  for (const std::string& scheme : schemes) {
    checks.push_back(handlerCheck(handlerFacts(surroundings, scheme)));
  }
  const LoginItemFacts loginItem = loginItemFacts(surroundings);
  checks.push_back(loginItemCheck(loginItem));
  checks.push_back(staleLoginItemsCheck(loginItem));
  const ConfigurationFacts configuration = configurationFacts(tool);
  checks.push_back(configurationCheck(configuration));
  checks.push_back(clientCheck(configuration));
  const LogFacts log = logFacts(configuration);
  checks.push_back(logDirectoryCheck(log));
  checks.push_back(journalCheck(log));
  return checks;
}

}  // namespace

std::string statusText(const std::string& title, const std::vector<Check>& checks,
                       const Style& style) {
  std::size_t nameWidth = 0;
  for (const Check& check : checks) {
    nameWidth = std::max(nameWidth, check.name.size());
  }
  std::string text =
      fmt::format("{}: {}\n", title, coloured(overallVerdict(checks), worstOf(checks), style));
  for (const Check& check : checks) {
    text += style.table ? row(check, nameWidth, style) : line(check);
  }
  return text;
}

Answer status(const Tool& tool) {
  const std::vector<Check> checks = allChecks(tool);
  const Bundle& bundle = tool.host.bundle();
  const std::string version = bundle.infoString("CFBundleVersion").value_or("");
  PropertyList::Array findings;
  std::transform(checks.begin(), checks.end(), std::back_inserter(findings), jsonOf);
  return {{{"command", "status"},
           {"verdict", overallVerdict(checks)},
           {"version", version},
           {"program", bundle.bundlePath()},
           {"checks", findings}},
          statusText(bundle.infoString("CFBundleName").value_or("") + " " + version, checks,
                     tool.style),
          worstOf(checks) == Level::error ? kFailed : kDone,
          {}};
}

}  // namespace vendril::tools
