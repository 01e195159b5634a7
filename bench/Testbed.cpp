#include "bench/Testbed.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vendril::bench {

Testbed::Testbed(const std::string& serviceDirectory)
    : bus_(serviceDirectory),
      link_(fmt::format("vendril://join?portalURI=http://127.0.0.1:{}/meeting?session_id=7",
                        portal_.port())) {}

std::unique_ptr<Program> Testbed::start(const Side& side, std::vector<std::string> launcher) {
  bus_.waitForOwner(side.busName, false);
  launcher.push_back(side.program);
  auto program = std::make_unique<Program>(launcher);
  bus_.waitForOwner(side.busName, true);
  return program;
}

double Testbed::microsecondsUntilRequest(Clock::time_point begin) {
  using namespace std::chrono_literals;
  const auto arrived = portal_.waitForRequest(30s);
  if (!arrived) {
    throw std::runtime_error("no request came");
  }
  return std::chrono::duration<double, std::micro>(*arrived - begin).count();
}

void Testbed::openLinks(const Side& side, int count) {
  for (int i = 0; i < count; ++i) {
    bus_.open(side.busName, link_);
    microsecondsUntilRequest(Clock::now());
  }
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace vendril::bench
