#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "bench/PrivateBus.h"
#include "bench/Program.h"
#include "bench/RawPortal.h"
#include "bench/Side.h"

namespace vendril::bench {

using Clock = RawPortal::Clock;

/// What all measurements need: a bus, a portal, and a link that leads to the portal.
class Testbed {
 public:
  explicit Testbed(const std::string& serviceDirectory);

  PrivateBus& bus() { return bus_; }
  RawPortal& portal() { return portal_; }
  const std::string& link() const { return link_; }

  /// Starts a program, by `launcher` when there is one, and waits until it takes links.
  std::unique_ptr<Program> start(const Side& side, std::vector<std::string> launcher = {});

  /// Waits for a request. Returns the microseconds from `begin` until its first byte was there.
  /// Throws std::runtime_error when none comes.
  double microsecondsUntilRequest(Clock::time_point begin);

  /// Lets the program open `count` links, one after the other.
  void openLinks(const Side& side, int count);

 private:
  PrivateBus bus_;
  RawPortal portal_;
  std::string link_;
};

/// Long enough for the side that was just measured to finish with the answer.
inline constexpr std::chrono::milliseconds kBetweenRounds{3};

double median(std::vector<double> values);

}  // namespace vendril::bench
