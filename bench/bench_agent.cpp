// Measures the agent against the floor program and a handler script, all in one run. Ends with 1
// when a bound is broken.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "bench/Measurements.h"

namespace vendril::bench {
namespace {

int run(int argc, char** argv) {
  Options options;
  CLI::App app("Measures the agent against the floor program and a handler script.");
  app.add_option("agent", options.agent.program, "Path of the agent")->required();
  app.add_option("floor", options.floor.program, "Path of the floor program")->required();
  app.add_option("script", options.script, "Path of the handler script")->required();
  app.add_option("services", options.serviceDirectory,
                 "Directory of the bus services of agent and floor program")
      ->required();
  app.add_option("--warm-rounds", options.warmRounds)->capture_default_str();
  app.add_option("--cold-rounds", options.coldRounds)->capture_default_str();
  app.add_option("--script-rounds", options.scriptRounds)->capture_default_str();
  app.add_option("--idle-seconds", options.idleSeconds, "How long wakeups are counted")
      ->capture_default_str();
  app.add_option("--links", options.links, "Links of one process, over which cost is watched")
      ->capture_default_str();
  app.add_option("--cost-file", options.costFile, "Where the cost of the links is written");
  app.add_option("--only", options.only,
                 "Measure these alone: starts, warm, endurance, load, "
                 "instructions");
  CLI11_PARSE(app, argc, argv);

  Testbed bed(options.serviceDirectory);
  Table table;
  const std::vector<std::pair<std::string, decltype(&measureStarts)>> measurements{
      {"starts", measureStarts},
      {"warm", measureWarm},
      {"endurance", measureEndurance},
      {"load", measureLoad},
      {"instructions", measureInstructions}};
  for (const auto& [name, measure] : measurements) {
    const auto& only = options.only;
    if (only.empty() || std::find(only.begin(), only.end(), name) != only.end()) {
      measure(bed, options, table);
    }
  }
  return table.passed() ? 0 : 1;
}

}  // namespace
}  // namespace vendril::bench

int main(int argc, char** argv) try {
  return vendril::bench::run(argc, argv);
} catch (const std::exception& error) {
  fmt::print(stderr, "bench_agent: {}\n", error.what());
  return 1;
}
