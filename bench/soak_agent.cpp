// Loads the agent with a burst of links and then a steady stream of them, for portals that are
// fast, slow, failing and dead in equal parts. Ends with 1 when a link has not exactly one outcome,
// or when memory, descriptors or threads leave their bounds.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "bench/LoadPortals.h"
#include "bench/OutcomeLedger.h"
#include "bench/PrivateBus.h"
#include "bench/Program.h"
#include "bench/RecordPipe.h"

namespace {

using namespace std::chrono_literals;
using vendril::bench::kPortalKinds;
using vendril::bench::LoadPortals;
using vendril::bench::Memory;
using vendril::bench::OutcomeLedger;
using vendril::bench::PortalKind;
using vendril::bench::PrivateBus;
using vendril::bench::Program;
using vendril::bench::RecordPipe;
using Clock = std::chrono::steady_clock;
using Outcome = OutcomeLedger::Outcome;

/// The level that memory has to return to is taken after so many links: by then the agent has made
/// whatever it keeps for the next one.
constexpr std::size_t kFirstLinks = 100;

/// One dead link in so many goes to a portal that never answers, the others to one that nothing
/// listens at. Each holds a socket for the whole minute that a request may take, so a steady stream
/// of them has to be thin: two a second at the default rate, 120 sockets at any time.
constexpr std::size_t kDeadLinksForOneSilent = 25;

/// By how much memory may stay above that level. The C library keeps up to seven freed blocks of
/// each size for each thread, 400 and more in all. After a burst hardly two of them share a page of
/// 4 KiB, and two threads are busy: the main one and that of the network.
/// Without these blocks a burst leaves 0.2 MiB.
constexpr double kMemoryAllowanceKib = 2048;

/// The sockets that the agent may have open at once, beside what it has open anyway.
constexpr std::size_t kSockets = 256;

/// The threads of the operation queue, which may not all have been needed for the first links.
constexpr std::size_t kWorkers = 4;

/// Longer than the agent gives a request. When no outcome comes for so long, none will.
constexpr auto kPatience = 90s;
constexpr auto kUntilIdle = 3s;
constexpr auto kBetweenLooks = 100ms;

struct Options {
  std::string agent;
  std::string agentName = "com.brelto.vendril";
  std::size_t burst = 10000;
  double linksPerSecond = 200;
  double minutes = 10;

  std::size_t steady() const { return static_cast<std::size_t>(linksPerSecond * minutes * 60); }
  std::size_t links() const { return kFirstLinks + burst + steady(); }
};

PortalKind kindOf(std::size_t session) {
  const std::size_t round = session / 4;
  switch (session % 4) {
    case 0:
      return PortalKind::fast;
    case 1:
      return PortalKind::slow;
    case 2:
      return round % 2 == 0 ? PortalKind::failing : PortalKind::breaking;
    default:
      return session >= kFirstLinks && round % kDeadLinksForOneSilent == 0 ? PortalKind::silent
                                                                           : PortalKind::closed;
  }
}

/// What the record has to say in the end, and how many requests have to reach the portal.
struct Kind {
  const char* name;
  Outcome outcome;
  int arrivals;
};

constexpr std::array<Kind, kPortalKinds> kKinds{{
    {"fast: answers at once", Outcome::success, 1},
    {"slow: answers after 250 ms", Outcome::success, 1},
    {"failing: answers 500", Outcome::status, 1},
    {"failing: resets the connection", Outcome::error, 1},
    {"dead: nothing listens", Outcome::error, 0},
    {"dead: never answers", Outcome::error, 1},
}};

/// What the kernel says of the agent at one moment, or the most of several moments.
struct Level {
  Memory memory;
  std::size_t descriptors = 0;
  std::size_t threads = 0;
};

Level levelOf(const Program& program) {
  return {program.memory(), program.descriptors(), program.threads()};
}

Level most(const Level& one, const Level& other) {
  return {{std::max(one.memory.proportional, other.memory.proportional),
           std::max(one.memory.privateDirty, other.memory.privateDirty)},
          std::max(one.descriptors, other.descriptors),
          std::max(one.threads, other.threads)};
}

/// How many links of one kind went as they should.
struct Tally {
  std::size_t links = 0;
  std::size_t requests = 0;
  std::size_t single = 0;
  std::size_t right = 0;
  std::size_t arrived = 0;
  Clock::duration slowest{};

  void add(const OutcomeLedger::Link& link, int arrivals, const Kind& due) {
    const auto countIf = [](std::size_t& counter, bool holds) { counter += holds ? 1U : 0U; };
    countIf(links, true);
    countIf(requests, link.requests == 1);
    countIf(single, link.outcomes == 1);
    countIf(right, link.outcomes > 0 && link.outcome == due.outcome);
    countIf(arrived, arrivals == due.arrivals);
    slowest = std::max(slowest, link.time);
  }

  bool isFull() const { return std::min({requests, single, right, arrived}) == links; }
};

/// Prints the tables and remembers whether a promise was broken.
class Report {
 public:
  void links(std::size_t count, const OutcomeLedger& ledger, const LoadPortals& portals) {
    fmt::print("\n{:<34}{:>8}{:>10}{:>13}{:>13}{:>10}{:>10}\n", "", "links", "requests",
               "one outcome", "the due one", "arrived", "slowest");
    for (std::size_t kind = 0; kind < kPortalKinds; ++kind) {
      linksOf(kind, count, ledger, portals);
    }
    fmt::print("{:<34}{:>8}{}\n", "outcomes of no request", ledger.strayOutcomes(),
               verdict(ledger.strayOutcomes() == 0));
  }

  void levels(const Level& idle, const Level& peak, const Level& afterBurst, const Level& end) {
    fmt::print("\n{:<24}{:>14}{:>10}{:>14}{:>12}{:>10}\n", "", "first links", "peak", "after burst",
               "at the end", "bound");
    memory("PSS, KiB", &Memory::proportional, {idle, peak, afterBurst, end});
    memory("private dirty, KiB", &Memory::privateDirty, {idle, peak, afterBurst, end});
    count("descriptors", &Level::descriptors, {idle, peak, afterBurst, end},
          idle.descriptors + kSockets);
    count("threads", &Level::threads, {idle, peak, afterBurst, end}, idle.threads + kWorkers);
  }

  bool passed() const { return passed_; }

 private:
  using FourLevels = std::array<Level, 4>;

  void linksOf(std::size_t kind, std::size_t count, const OutcomeLedger& ledger,
               const LoadPortals& portals) {
    const Kind& due = kKinds.at(kind);
    Tally tally;
    for (std::size_t session = 0; session < count; ++session) {
      if (kindOf(session) == static_cast<PortalKind>(kind)) {
        tally.add(ledger.link(session), portals.arrivals(session), due);
      }
    }
    fmt::print("{:<34}{:>8}{:>10}{:>13}{:>13}{:>10}{:>8.2f} s{}\n", due.name, tally.links,
               tally.requests, tally.single, tally.right, tally.arrived,
               std::chrono::duration<double>(tally.slowest).count(), verdict(tally.isFull()));
  }

  void memory(const char* what, double Memory::*value, const FourLevels& levels) {
    const double bound = levels[0].memory.*value + kMemoryAllowanceKib;
    fmt::print("{:<24}{:>14.0f}{:>10.0f}{:>14.0f}{:>12.0f}{:>10.0f}{}\n", what,
               levels[0].memory.*value, levels[1].memory.*value, levels[2].memory.*value,
               levels[3].memory.*value, bound,
               verdict(std::max(levels[2].memory.*value, levels[3].memory.*value) <= bound));
  }

  void count(const char* what, std::size_t Level::*value, const FourLevels& levels,
             std::size_t bound) {
    fmt::print("{:<24}{:>14}{:>10}{:>14}{:>12}{:>10}{}\n", what, levels[0].*value, levels[1].*value,
               levels[2].*value, levels[3].*value, bound, verdict(levels[1].*value <= bound));
  }

  const char* verdict(bool kept) {
    passed_ = passed_ && kept;
    return kept ? "" : "  BROKEN";
  }

  bool passed_ = true;
};

class Soak {
 public:
  explicit Soak(Options options)
      : options_(std::move(options)),
        portals_(options_.links()),
        ledger_(options_.links()),
        record_([this](std::string_view line) { ledger_.read(line); }),
        agent_({options_.agent}, record_.writeEnd()) {
    record_.closeWriteEnd();
    bus_.waitForOwner(options_.agentName, true);
  }

  bool run() {
    openMany(kFirstLinks);
    const Level idle = restingLevel("the first links");
    peak_ = idle;

    const Clock::time_point begin = Clock::now();
    openMany(options_.burst);
    const Level afterBurst = restingLevel("the burst");
    const Clock::time_point burstEnd = Clock::now();

    openSteadily();
    const Level end = restingLevel("the steady stream");
    fmt::print("burst: {} links, all outcomes after {:.1f} s; steady: {} links in {:.1f} min\n",
               options_.burst, std::chrono::duration<double>(burstEnd - begin - kUntilIdle).count(),
               options_.steady(), options_.minutes);

    Report report;
    report.links(opened_, ledger_, portals_);
    report.levels(idle, peak_, afterBurst, end);
    return report.passed();
  }

 private:
  void openNext() {
    const std::size_t session = opened_++;
    const std::string portal = portals_.addressFor(kindOf(session), session);
    ledger_.opened(session);
    bus_.open(options_.agentName, "vendril://join?portalURI=" + portal);
  }

  void openMany(std::size_t count) {
    for (std::size_t link = 0; link < count; ++link) {
      openNext();
    }
  }

  // Links that are late because this process did not get its turn are made up for at once.
  void openSteadily() {
    const std::chrono::duration<double> interval(1 / options_.linksPerSecond);
    const Clock::time_point begin = Clock::now();
    Clock::time_point nextLook = begin;
    for (std::size_t link = 0; link < options_.steady(); ++link) {
      std::this_thread::sleep_until(begin + std::chrono::duration_cast<Clock::duration>(
                                                interval * static_cast<double>(link)));
      openNext();
      if (Clock::now() >= nextLook) {
        peak_ = most(peak_, levelOf(agent_));
        nextLook = Clock::now() + kBetweenLooks;
      }
    }
  }

  /// The level of the agent once every link has its outcome and the agent had time to rest.
  Level restingLevel(const char* after) {
    std::size_t seen = ledger_.outcomes();
    Clock::time_point lastChange = Clock::now();
    while (seen < opened_ && Clock::now() < lastChange + kPatience) {
      std::this_thread::sleep_for(kBetweenLooks);
      peak_ = most(peak_, levelOf(agent_));
      if (const std::size_t now = ledger_.outcomes(); now != seen) {
        seen = now;
        lastChange = Clock::now();
      }
    }
    fmt::print("after {}: {} links, {} outcomes\n", after, opened_, seen);
    std::this_thread::sleep_for(kUntilIdle);
    return levelOf(agent_);
  }

  Options options_;
  PrivateBus bus_{std::string()};
  LoadPortals portals_;
  OutcomeLedger ledger_;
  RecordPipe record_;
  Program agent_;
  std::size_t opened_ = 0;
  Level peak_;
};

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  CLI::App app("Loads the agent and checks that every link has its outcome.");
  app.add_option("agent", options.agent, "Path of the agent")->required();
  app.add_option("--agent-name", options.agentName, "Bus name of the agent")->capture_default_str();
  app.add_option("--burst", options.burst, "Links at once")->capture_default_str();
  app.add_option("--links-per-second", options.linksPerSecond, "Links a second after that")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  app.add_option("--minutes", options.minutes, "How long they come")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // Whoever follows a log sees how far it is.
  return Soak(options).run() ? 0 : 1;
} catch (const std::exception& error) {
  fmt::print(stderr, "soak_agent: {}\n", error.what());
  return 1;
}
