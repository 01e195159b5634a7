#include "tools/checks/AgentCheck.h"

#include <algorithm>

#include "platform/freedesktop/BusHandover.h"
#include "platform/freedesktop/DesktopExec.h"

namespace vendril::tools {
namespace {

/// A running agent answers within milliseconds.
constexpr std::chrono::seconds kSignOfLifeLimit{2};

/// The time as people of this place read it.
std::string timeText(const std::optional<Date>& date) {
  return date ? DateFormatter("yyyy-MM-dd HH:mm:ss").stringFromDate(*date) : "an unknown time";
}

std::string numberOf(const Process& process) {
  return std::to_string(process.id);
}

PropertyList::Dictionary detailsOf(const Process& process) {
  PropertyList::Dictionary details{{"process", std::int64_t{process.id}},
                                   {"program", process.program}};
  if (process.since) {
    details.emplace("since", description(*process.since));
  }
  return details;
}

Check unanswering(const Process& owner) {
  Check check{"agent",
              "not-answering",
              Level::error,
              "process " + numberOf(owner) + " is running but does not answer",
              "kill -KILL " + numberOf(owner),
              detailsOf(owner)};
  if (owner.isStopped) {
    check.summary += ": it has been stopped";
    check.remedy = "kill -CONT " + numberOf(owner);
  }
  check.details.emplace("stopped", owner.isStopped);
  return check;
}

Check running(const AgentFacts& facts, const Process& owner) {
  if (!facts.answers) {
    return unanswering(owner);
  }
  if (owner.program != facts.program) {
    return {"agent",
            "other-program",
            Level::warning,
            "process " + numberOf(owner) + " is the agent of another installation, " +
                owner.program + "; after it ends, the next link starts this one",
            "kill " + numberOf(owner),
            detailsOf(owner)};
  }
  if (owner.isOutdated) {
    return {"agent",
            "outdated",
            Level::warning,
            "process " + numberOf(owner) +
                " still runs the program as it was before the last upgrade; after it ends, the "
                "next link starts the new one",
            "kill " + numberOf(owner),
            detailsOf(owner)};
  }
  return {"agent",      "running",
          Level::ok,    "running since " + timeText(owner.since) + ", process " + numberOf(owner),
          std::nullopt, detailsOf(owner)};
}

}  // namespace

AgentFacts agentFacts(const Surroundings& surroundings, const Bus& bus) {
  AgentFacts facts;
  facts.program = surroundings.program;
  facts.isInstalled = findExecutable(surroundings.program).has_value();
  facts.reinstallCommand = surroundings.reinstallCommand();
  facts.strays = processesOf(surroundings.program);
  const std::optional<pid_t> owner = bus.ownerOf(surroundings.id);
  if (owner) {
    // The program of another user's process cannot be told, and is not of this installation.
    facts.owner = processWith(*owner).value_or(Process{*owner, "", false, false, std::nullopt});
    facts.answers = handOver(bus.connection->connection(), surroundings.id, {}, kSignOfLifeLimit) ==
                    Handover::done;
    std::erase_if(facts.strays, [&](const Process& stray) { return stray.id == *owner; });
  }
  return facts;
}

Check programCheck(const AgentFacts& facts) {
  Check check{"program",     "installed",  Level::ok,
              facts.program, std::nullopt, {{"path", facts.program}}};
  if (!facts.isInstalled) {
    check.find("missing", Level::error, facts.program + " is not there or cannot be run");
    check.remedy = facts.reinstallCommand;
  }
  return check;
}

Check agentCheck(const AgentFacts& facts) {
  if (facts.owner) {
    return running(facts, *facts.owner);
  }
  if (!facts.strays.empty()) {
    const Process& stray = facts.strays.front();
    return {"agent",
            "off-bus",
            Level::warning,
            "process " + numberOf(stray) + " is running since " + timeText(stray.since) +
                " without the session bus; links do not reach it",
            "kill " + numberOf(stray),
            detailsOf(stray)};
  }
  return {"agent",      "not-running",
          Level::note,  "not running; the desktop starts it with the next link",
          std::nullopt, {}};
}

}  // namespace vendril::tools
