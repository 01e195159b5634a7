#include <fmt/format.h>

#include <thread>

#include "bench/Measurements.h"

namespace vendril::bench {
namespace {

/// Links that have been sent and not yet seen at the portal, enough to keep the program busy.
constexpr int kUnderWay = 32;
constexpr int kSustainedLinks = 5'000;

/// Links a second, with all threads of the program on one processor.
double sustainedRate(Testbed& bed, const Side& side) {
  const auto program = bed.start(side, {"taskset", "--cpu-list", "0"});
  bed.openLinks(side, 10);
  const Clock::time_point begin = Clock::now();
  for (int i = 0; i < kUnderWay; ++i) {
    bed.bus().open(side.busName, bed.link());
  }
  for (int seen = 0; seen < kSustainedLinks; ++seen) {
    bed.microsecondsUntilRequest(Clock::now());
    if (seen + kUnderWay < kSustainedLinks) {
      bed.bus().open(side.busName, bed.link());
    }
  }
  const std::chrono::duration<double> time = Clock::now() - begin;
  return kSustainedLinks / time.count();
}

/// KiB for each of `count` requests that a portal leaves without an answer.
double memoryInFlight(const Options& options, int count) {
  Testbed bed(options.serviceDirectory);
  const auto program = bed.start(options.agent);
  bed.openLinks(options.agent, 10);
  std::this_thread::sleep_for(kBetweenRounds);
  const Memory before = program->memory();
  bed.portal().stopAnswering();
  for (int i = 0; i < count; ++i) {
    bed.bus().openAndWait(options.agent.busName, bed.link());
  }
  return (program->memory().privateDirty - before.privateDirty) / count;
}

}  // namespace

void measureLoad(Testbed& bed, const Options& options, Table& table) {
  table.ratio("links a second, one processor", sustainedRate(bed, options.agent),
              sustainedRate(bed, options.floor), "1/s", std::nullopt);
  for (const int count : {1'000, 10'000}) {
    table.amount(fmt::format("memory for a request in flight, {} of them", count),
                 memoryInFlight(options, count) * 1024, "bytes");
  }
}

}  // namespace vendril::bench
