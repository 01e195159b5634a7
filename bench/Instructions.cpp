#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "bench/Measurements.h"

namespace vendril::bench {
namespace {

constexpr int kLinks = 20;

/// The sum in what callgrind has written when it was asked to.
double totalIn(const std::string& file) {
  std::ifstream stream(file);
  const std::string name = "summary: ";
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(name)) {
      return std::stod(line.substr(name.size()));
    }
  }
  throw std::runtime_error("callgrind has written no sum to " + file);
}

void control(const Program& program, const char* what) {
  Program({"callgrind_control", what, std::to_string(program.id())}).waitForEnd();
}

double instructionsPerLink(Testbed& bed, const Side& side) {
  const std::string file =
      std::filesystem::temp_directory_path() / fmt::format("{}.callgrind", side.busName);
  const auto program =
      bed.start(side, {"valgrind", "--tool=callgrind", "--callgrind-out-file=" + file});
  bed.openLinks(side, 3);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  control(*program, "--zero");
  bed.openLinks(side, kLinks);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  control(*program, "--dump");
  // The dump that was asked for is the first one.
  const std::string dump = file + ".1";
  const double total = totalIn(dump);
  std::filesystem::remove(dump);
  return total / kLinks;
}

}  // namespace

void measureInstructions(Testbed& bed, const Options& options, Table& table) {
  table.ratio("thousand instructions for a warm link",
              instructionsPerLink(bed, options.agent) / 1000,
              instructionsPerLink(bed, options.floor) / 1000, "", std::nullopt);
}

}  // namespace vendril::bench
