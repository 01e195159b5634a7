#include <fmt/format.h>

#include <fstream>
#include <memory>
#include <optional>
#include <thread>

#include "bench/Measurements.h"

namespace vendril::bench {
namespace {

constexpr double kWakeups = 0;
constexpr double kPrivateDirtyRatio = 1.3;
constexpr double kMemoryGrowth = 1.1;
/// The noise of a shared machine, and no more.
constexpr double kCostGrowth = 1.2;

constexpr auto kUntilIdle = std::chrono::seconds(2);

/// What one link costs on average, from the link before `first` to `last`.
struct Cost {
  int first;
  int last;
  double processorMicroseconds;
  double wallMicroseconds;
};

/// Agent and floor program side by side, with the same links behind them. Memory that is shared is
/// shared by the same processes.
class Endurance {
 public:
  Endurance(Testbed& bed, const Options& options, Table& table)
      : bed_(bed),
        options_(options),
        table_(table),
        agent_(bed.start(options.agent)),
        floor_(bed.start(options.floor)) {}

  void run() {
    reportIdle("after start");
    costs_.push_back(openTo(10));
    costs_.push_back(openTo(100));
    const Memory early = settledMemory();
    costs_.push_back(openTo(1'000));
    reportIdle("after 1,000 links");
    costs_.push_back(openTo(10'000));
    const Memory late = settledMemory();
    table_.ratio("PSS, 10,000 links to 100", late.proportional, early.proportional, "KiB",
                 kMemoryGrowth);
    table_.ratio("private dirty, 10,000 links to 100", late.privateDirty, early.privateDirty, "KiB",
                 kMemoryGrowth);
    if (options_.links > links_) {
      costs_.push_back(openTo(options_.links));
    }
    reportCosts();
  }

 private:
  /// Lets the agent open links until it has opened `count` in all, and the floor program as many up
  /// to where their memory is compared.
  Cost openTo(int count) {
    constexpr int kCompared = 1'000;
    const int first = links_;
    const auto processorTime = agent_->processorTime();
    const Clock::time_point begin = Clock::now();
    bed_.openLinks(options_.agent, count - links_);
    const Clock::time_point end = Clock::now();
    // The answer to the last one.
    std::this_thread::sleep_for(kBetweenRounds);
    const auto used = agent_->processorTime() - processorTime;
    if (count <= kCompared) {
      bed_.openLinks(options_.floor, count - links_);
    }
    links_ = count;
    const double links = count - first;
    return {first + 1, count, std::chrono::duration<double, std::micro>(used).count() / links,
            std::chrono::duration<double, std::micro>(end - begin).count() / links};
  }

  Memory settledMemory() const {
    std::this_thread::sleep_for(kUntilIdle);
    return agent_->memory();
  }

  void reportIdle(const char* when) {
    std::this_thread::sleep_for(kUntilIdle);
    const long agentBefore = agent_->contextSwitches();
    std::this_thread::sleep_for(std::chrono::seconds(options_.idleSeconds));
    const auto wakeups = static_cast<double>(agent_->contextSwitches() - agentBefore);
    const Memory agent = agent_->memory();
    const Memory floor = floor_->memory();
    table_.amount(fmt::format("wakeups in {} s {}", options_.idleSeconds, when), wakeups, "",
                  kWakeups);
    table_.ratio(fmt::format("PSS {}", when), agent.proportional, floor.proportional, "KiB",
                 std::nullopt);
    table_.ratio(fmt::format("private dirty {}", when), agent.privateDirty, floor.privateDirty,
                 "KiB", kPrivateDirtyRatio);
    table_.ratio(fmt::format("mapped libraries {}", when), agent.libraries, floor.libraries, "",
                 std::nullopt);
  }

  void reportCosts() {
    std::optional<std::ofstream> file;
    if (!options_.costFile.empty()) {
      file.emplace(options_.costFile);
      *file << "first,last,processor_us,wall_us\n";
    }
    for (const Cost& cost : costs_) {
      table_.amount(fmt::format("processor time for a link, {} to {}", cost.first, cost.last),
                    cost.processorMicroseconds, "us");
      if (file) {
        *file << fmt::format("{},{},{:.1f},{:.1f}\n", cost.first, cost.last,
                             cost.processorMicroseconds, cost.wallMicroseconds);
      }
    }
    reportGrowth();
  }

  /// The agent with all its links behind it, in turns with one that has just started, on a bus of
  /// its own: on a machine that does other things too, minutes are too far apart to be compared.
  void reportGrowth() {
    constexpr int kRounds = 50;
    constexpr int kLinksInARound = 20;
    Testbed other(options_.serviceDirectory);
    const auto fresh = other.start(options_.agent);
    other.openLinks(options_.agent, 10);
    std::chrono::nanoseconds late{};
    std::chrono::nanoseconds early{};
    for (int round = 0; round < kRounds; ++round) {
      late += timeOf(*agent_, bed_, kLinksInARound);
      early += timeOf(*fresh, other, kLinksInARound);
    }
    constexpr double kLinks = kRounds * kLinksInARound;
    table_.ratio(fmt::format("processor time after {} links, to after 10", links_),
                 std::chrono::duration<double, std::micro>(late).count() / kLinks,
                 std::chrono::duration<double, std::micro>(early).count() / kLinks, "us",
                 kCostGrowth);
  }

  std::chrono::nanoseconds timeOf(const Program& agent, Testbed& bed, int links) const {
    const auto before = agent.processorTime();
    bed.openLinks(options_.agent, links);
    std::this_thread::sleep_for(kBetweenRounds);
    return agent.processorTime() - before;
  }

  Testbed& bed_;
  const Options& options_;
  Table& table_;
  std::unique_ptr<Program> agent_;
  std::unique_ptr<Program> floor_;
  int links_ = 0;
  std::vector<Cost> costs_;
};

}  // namespace

void measureEndurance(Testbed& bed, const Options& options, Table& table) {
  Endurance(bed, options, table).run();
}

}  // namespace vendril::bench
