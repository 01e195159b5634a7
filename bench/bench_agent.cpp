// Measures the agent against the floor program, both in one run and in turns, so that what else the
// machine does falls on both alike. Ends with 1 when a bound is broken.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/Program.h"
#include "bench/RawPortal.h"

namespace {

using namespace std::chrono_literals;
using vendril::bench::Memory;
using vendril::bench::PrivateBus;
using vendril::bench::Program;
using vendril::bench::RawPortal;
using Clock = RawPortal::Clock;

constexpr double kWarmRatio = 3.0;
constexpr double kColdRatio = 1.5;
constexpr double kProportionalKib = 16 * 1024;
constexpr double kPrivateDirtyKib = 3 * 1024;

constexpr auto kRequestTimeout = 10s;
// Long enough for the side that was just measured to finish with the answer.
constexpr auto kBetweenRounds = 3ms;
constexpr auto kUntilIdle = 2s;

struct Options {
  std::string agent;
  std::string agentName = "com.brelto.vendril";
  std::string floor;
  std::string floorName = "com.brelto.vendril.Floor";
  int warmRounds = 500;
  int coldRounds = 25;
  int idleSeconds = 10;
};

struct Side {
  std::string program;
  std::string busName;
  std::vector<double> microseconds;
};

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Prints one line for each measure and remembers whether a bound was broken.
class Report {
 public:
  Report() { fmt::print("{:<34}{:>12}{:>12}{:>9}{:>9}\n", "", "agent", "floor", "", "bound"); }

  void ratio(const char* what, double agent, double floor, double bound) {
    fmt::print("{:<34}{:>9.0f} us{:>9.0f} us{:>9.2f}{:>9.1f}{}\n", what, agent, floor,
               agent / floor, bound, verdict(agent / floor <= bound));
  }

  void amount(const char* what, double agent, double bound, const char* unit) {
    fmt::print("{:<34}{:>8.0f} {:<3}{:>30.0f}{}\n", what, agent, unit, bound,
               verdict(agent <= bound));
  }

  bool passed() const { return passed_; }

 private:
  const char* verdict(bool within) {
    passed_ = passed_ && within;
    return within ? "" : "  TOO MUCH";
  }

  bool passed_ = true;
};

class Benchmark {
 public:
  explicit Benchmark(Options options)
      : options_(std::move(options)),
        link_(fmt::format("vendril://join?portalURI=http://127.0.0.1:{}/meeting?session_id=7",
                          portal_.port())) {}

  bool run() {
    measureCold();
    measureWarm();
    measureFreshMemory();
    return report_.passed();
  }

 private:
  double microsecondsUntilRequest(Clock::time_point begin, const std::string& who) {
    const auto arrived = portal_.waitForRequest(kRequestTimeout);
    if (!arrived) {
      throw std::runtime_error("no request came from " + who);
    }
    return std::chrono::duration<double, std::micro>(*arrived - begin).count();
  }

  double measureOpen(const Side& side) {
    std::this_thread::sleep_for(kBetweenRounds);
    const Clock::time_point begin = Clock::now();
    bus_.open(side.busName, link_);
    return microsecondsUntilRequest(begin, side.program);
  }

  double measureStart(const Side& side) {
    bus_.waitForOwner(side.busName, false);
    const Clock::time_point begin = Clock::now();
    const Program program({side.program, link_});
    const double result = microsecondsUntilRequest(begin, side.program);
    std::this_thread::sleep_for(kBetweenRounds);
    return result;
  }

  // The first round of each side fills caches and, for the agent, registers it; it is not counted.
  void inTurns(int rounds, const std::function<double(const Side&)>& measure, Side& agent,
               Side& floor) {
    for (int round = 0; round <= rounds; ++round) {
      for (Side* const side : {&agent, &floor}) {
        const double value = measure(*side);
        if (round > 0) {
          side->microseconds.push_back(value);
        }
      }
    }
  }

  void measureCold() {
    Side agent = agentSide();
    Side floor = floorSide();
    inTurns(
        options_.coldRounds, [this](const Side& side) { return measureStart(side); }, agent, floor);
    report_.ratio("cold: from exec to the request", median(agent.microseconds),
                  median(floor.microseconds), kColdRatio);
  }

  void measureWarm() {
    Side agent = agentSide();
    Side floor = floorSide();
    const std::unique_ptr<Program> agentProgram = start(agent);
    std::unique_ptr<Program> floorProgram = start(floor);
    inTurns(
        options_.warmRounds, [this](const Side& side) { return measureOpen(side); }, agent, floor);
    report_.ratio("warm: from Open to the request", median(agent.microseconds),
                  median(floor.microseconds), kWarmRatio);

    floorProgram.reset();
    reportIdle(*agentProgram, "after links");
  }

  void measureFreshMemory() {
    const Side agent = agentSide();
    const std::unique_ptr<Program> program = start(agent);
    reportIdle(*program, "before the first link");
  }

  void reportIdle(const Program& program, const std::string& when) {
    std::this_thread::sleep_for(kUntilIdle);
    const long before = program.contextSwitches();
    std::this_thread::sleep_for(std::chrono::seconds(options_.idleSeconds));
    const auto wakeups = static_cast<double>(program.contextSwitches() - before);
    const Memory memory = program.memory();
    report_.amount(("wakeups " + when).c_str(), wakeups, 0, "");
    report_.amount(("PSS " + when).c_str(), memory.proportional, kProportionalKib, "KiB");
    report_.amount(("private dirty " + when).c_str(), memory.privateDirty, kPrivateDirtyKib, "KiB");
  }

  std::unique_ptr<Program> start(const Side& side) {
    bus_.waitForOwner(side.busName, false);
    auto program = std::make_unique<Program>(std::vector<std::string>{side.program});
    bus_.waitForOwner(side.busName, true);
    return program;
  }

  Side agentSide() const { return {options_.agent, options_.agentName, {}}; }
  Side floorSide() const { return {options_.floor, options_.floorName, {}}; }

  Options options_;
  PrivateBus bus_;
  RawPortal portal_;
  std::string link_;
  Report report_;
};

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  CLI::App app("Measures the agent against the floor program.");
  app.add_option("agent", options.agent, "Path of the agent")->required();
  app.add_option("floor", options.floor, "Path of the floor program")->required();
  app.add_option("--agent-name", options.agentName, "Bus name of the agent")->capture_default_str();
  app.add_option("--warm-rounds", options.warmRounds)->capture_default_str();
  app.add_option("--cold-rounds", options.coldRounds)->capture_default_str();
  app.add_option("--idle-seconds", options.idleSeconds)->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  return Benchmark(options).run() ? 0 : 1;
} catch (const std::exception& error) {
  fmt::print(stderr, "bench_agent: {}\n", error.what());
  return 1;
}
