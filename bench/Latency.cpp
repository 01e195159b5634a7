#include <csignal>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include "bench/Measurements.h"

namespace vendril::bench {
namespace {

constexpr double kColdRatio = 1.3;
constexpr double kHandoverRatio = 1.0;
constexpr double kWarmRatio = 2.0;
constexpr double kColdAdvantage = 8;
constexpr double kWarmAdvantage = 150;

using Round = std::function<double(const Side&)>;

struct Medians {
  double agent;
  double floor;
};

double fromExecToRequest(Testbed& bed, const std::vector<std::string>& commandLine) {
  const Clock::time_point begin = Clock::now();
  const Program program(commandLine);
  const double result = bed.microsecondsUntilRequest(begin);
  std::this_thread::sleep_for(kBetweenRounds);
  return result;
}

double fromOpenToRequest(Testbed& bed, const Side& side) {
  std::this_thread::sleep_for(kBetweenRounds);
  const Clock::time_point begin = Clock::now();
  bed.bus().open(side.busName, bed.link());
  return bed.microsecondsUntilRequest(begin);
}

double fromActivationToRequest(Testbed& bed, const Side& side) {
  bed.bus().waitForOwner(side.busName, false);
  const double result = fromOpenToRequest(bed, side);
  kill(bed.bus().ownerOf(side.busName), SIGTERM);
  return result;
}

/// From the start of a second process to its end, the first one being there.
double handOver(Testbed& bed, const Side& side) {
  std::this_thread::sleep_for(kBetweenRounds);
  // The floor program answers when its request has been answered.
  auto request =
      std::async(std::launch::async, [&bed] { return bed.microsecondsUntilRequest(Clock::now()); });
  const Clock::time_point begin = Clock::now();
  Program second({side.program, bed.link()});
  second.waitForEnd();
  const Clock::time_point end = Clock::now();
  request.get();
  return std::chrono::duration<double, std::micro>(end - begin).count();
}

/// Agent and floor program in turns, so that what else the machine does falls on both alike. The
/// first round of each fills caches and, for the agent, registers it; it is not counted.
Medians inTurns(int rounds, const Options& options, const Round& round) {
  std::vector<double> agent;
  std::vector<double> floor;
  for (int i = 0; i <= rounds; ++i) {
    const double first = round(options.agent);
    const double second = round(options.floor);
    if (i > 0) {
      agent.push_back(first);
      floor.push_back(second);
    }
  }
  return {median(std::move(agent)), median(std::move(floor))};
}

double scriptMedian(Testbed& bed, const Options& options) {
  std::vector<double> times;
  for (int i = 0; i <= options.scriptRounds; ++i) {
    const double time = fromExecToRequest(bed, {options.script, bed.link()});
    if (i > 0) {
      times.push_back(time);
    }
  }
  return median(std::move(times));
}

}  // namespace

void measureStarts(Testbed& bed, const Options& options, Table& table) {
  const Medians cold = inTurns(options.coldRounds, options, [&bed](const Side& side) {
    bed.bus().waitForOwner(side.busName, false);
    return fromExecToRequest(bed, {side.program, bed.link()});
  });
  table.ratio("cold: exec to request", cold.agent, cold.floor, "us", kColdRatio);

  const Medians activation = inTurns(options.coldRounds, options, [&bed](const Side& side) {
    return fromActivationToRequest(bed, side);
  });
  table.ratio("cold: bus activation to request", activation.agent, activation.floor, "us",
              kColdRatio);

  const double script = scriptMedian(bed, options);
  table.advantage("cold: exec to request, other = script", cold.agent, script, "us",
                  kColdAdvantage);
}

void measureWarm(Testbed& bed, const Options& options, Table& table) {
  const auto agent = bed.start(options.agent);
  const auto floor = bed.start(options.floor);
  const Medians warm = inTurns(options.warmRounds, options,
                               [&bed](const Side& side) { return fromOpenToRequest(bed, side); });
  table.ratio("warm: Open to request", warm.agent, warm.floor, "us", kWarmRatio);
  table.advantage("warm: Open to request, other = script", warm.agent, scriptMedian(bed, options),
                  "us", kWarmAdvantage);
  const Medians second = inTurns(options.coldRounds, options,
                                 [&bed](const Side& side) { return handOver(bed, side); });
  table.ratio("second process: exec to exit", second.agent, second.floor, "us", kHandoverRatio);
}

}  // namespace vendril::bench
