// Measures the pieces that every link goes through, each beside what one would take instead. Ends
// with 1 when a piece is slower than that, or than it may be.

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <glib.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/ZQN5VendrilAppDelegate.h"
#include "bench/PlainProgram.h"
#include "config/ZQN5PublishedConfiguration.h"
#include "logging/ZQN5SimpleLogger.h"
#include "platform/Host.h"
#include "platform/MessageFormat.h"
#include "platform/PercentEncoding.h"
#include "platform/Url.h"
#include "platform/UserDirectories.h"
#include "platform/freedesktop/FreedesktopHost.h"

namespace vendril::bench {
namespace {

constexpr const char* kReport =
    R"({"appName":"Brelto Orvanta 3.21.0","appVersion":"3.21.0.64.24","isMeetMeOnly":true,)"
    R"("meetmeCapable":1,"videoCapable":1,"SIPready":1,"SIPDomain":"sip.example"})";
constexpr const char* kLink =
    "vendril://join?portalURI=https%3A%2F%2Fportal.example%2Fmeet%3Flang%3Den%26session_id%3D7";
constexpr const char* kIdentifier = "234FD42C-AB6D-41FB-BE47-E0188410F8FF";
constexpr const char* kClassName = "ZQN5VendrilAppDelegate";

std::string configurationFile() {
  const std::string library = Host::current().userDirectories().libraryDirectories().front();
  return library + "/Preferences/group.com.brelto.orvanta.plist";
}

void escapeOurs(benchmark::State& state) {
  CharacterSet allowed = CharacterSet::urlPathAllowedCharacterSet();
  allowed.removeCharactersInString("&+=");
  const std::string text = kReport;
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(addPercentEncoding(text, allowed));
  }
}
BENCHMARK(escapeOurs)->Name("percent escaping/ours");

void escapeCurl(benchmark::State& state) {
  CURL* const handle = curl_easy_init();
  const std::string text = kReport;
  for ([[maybe_unused]] const auto _ : state) {
    char* const escaped = curl_easy_escape(handle, text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(escaped);
    curl_free(escaped);
  }
  curl_easy_cleanup(handle);
}
BENCHMARK(escapeCurl)->Name("percent escaping/libcurl");

void parseOurs(benchmark::State& state) {
  const ZQN5VendrilAppDelegate delegate;
  const Url link = Url::parse(kLink).value();
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(delegate.parse(link));
  }
}
BENCHMARK(parseOurs)->Name("parse:/ours");

void parseCurl(benchmark::State& state) {
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(plainParse(kLink));
  }
}
BENCHMARK(parseCurl)->Name("parse:/libcurl");

void loadOurs(benchmark::State& state) {
  ZQN5PublishedConfiguration configuration(nullptr);
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(configuration.loadFromFile());
  }
}
BENCHMARK(loadOurs)->Name("configuration load/ours");

void loadPlain(benchmark::State& state) {
  const std::string path = configurationFile();
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(plainLoad(path));
  }
}
BENCHMARK(loadPlain)->Name("configuration load/libplist");

void reportOurs(benchmark::State& state) {
  ZQN5PublishedConfiguration configuration(nullptr);
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(configuration.getClientInfoJSONWithSkipSearch(false));
  }
}
BENCHMARK(reportOurs)->Name("report/ours");

void reportPlain(benchmark::State& state) {
  const std::string path = configurationFile();
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(plainReport(path));
  }
}
BENCHMARK(reportPlain)->Name("report/libplist and Jansson");

void logOurs(benchmark::State& state) {
  ZQN5SimpleLogger logger;
  for ([[maybe_unused]] const auto _ : state) {
    logger.log("[%@] Sending POST request %@ to: %@%s", kClassName, kIdentifier, kLink, "");
  }
}
BENCHMARK(logOurs)->Name("log line/ours");

void logSpdlog(benchmark::State& state) {
  const auto logger = spdlog::basic_logger_mt("bench", "/dev/null");
  logger->flush_on(spdlog::level::trace);
  for ([[maybe_unused]] const auto _ : state) {
    logger->info("[{}] Sending POST request {} to: {}{}", kClassName, kIdentifier, kLink, "");
  }
  spdlog::drop("bench");
}
BENCHMARK(logSpdlog)->Name("log line/spdlog");

void formatOurs(benchmark::State& state) {
  for ([[maybe_unused]] const auto _ : state) {
    benchmark::DoNotOptimize(formatMessage("[%@] Request %@ failed with HTTP status code: %ld%s",
                                           kClassName, kIdentifier, 404L, ""));
  }
}
BENCHMARK(formatOurs)->Name("message format/ours");

void formatPrintf(benchmark::State& state) {
  for ([[maybe_unused]] const auto _ : state) {
    char* const text = g_strdup_printf("[%s] Request %s failed with HTTP status code: %ld%s",
                                       kClassName, kIdentifier, 404L, "");
    benchmark::DoNotOptimize(std::string(text));
    g_free(text);
  }
}
BENCHMARK(formatPrintf)->Name("message format/printf");

/// What a piece may take of the time of what stands beside it: no more, and a tenth by which one
/// run differs from the next.
constexpr double kBound = 1.1;

/// Keeps the shortest time of each benchmark, which other load can only
/// lengthen.
class ShortestTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        const std::string name = run.run_name.function_name;
        const double time = run.GetAdjustedCPUTime();
        const auto [entry, isNew] = times_.try_emplace(name, time);
        entry->second = std::min(entry->second, time);
      }
    }
  }

  /// Compares each piece with what stands beside it. True when none breaks its bound.
  bool compare() const {
    bool passed = true;
    fmt::print("{:<46}{:>10}{:>10} {:<6}{:>8}{:>9}\n", "", "ours", "other", "unit", "ratio",
               "bound");
    for (const auto& [name, time] : times_) {
      const std::size_t slash = name.find('/');
      const auto ours = times_.find(name.substr(0, slash) + "/ours");
      if (ours == times_.end() || ours->first == name) {
        continue;
      }
      const double ratio = ours->second / time;
      const bool within = ratio <= kBound;
      passed = passed && within;
      fmt::print("{:<46}{:>10.0f}{:>10.0f} {:<6}{:>8.2f}{:>9}{}\n",
                 name.substr(0, slash) + ", other = " + name.substr(slash + 1), ours->second, time,
                 "ns", ratio, fmt::format("<= {:.2f}", kBound), within ? "" : "  TOO MUCH");
    }
    return passed;
  }

 private:
  std::map<std::string, double> times_;
};

void logNowhere() {
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDERR_FILENO);
  close(nowhere);
}

}  // namespace
}  // namespace vendril::bench

int main(int argc, char** argv) {
  using vendril::Host;
  benchmark::Initialize(&argc, argv);
  vendril::bench::logNowhere();
  vendril::FreedesktopHost host(argc, argv, [](const vendril::Bundle& bundle) {
    return vendril::ZQN5ProtocolHandler::supportedURLSchemes(bundle);
  });
  Host::install(&host);
  vendril::bench::writeConfiguration(vendril::bench::configurationFile());
  vendril::bench::ShortestTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  return times.compare() ? 0 : 1;
}
