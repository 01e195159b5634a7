#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vendril::bench {

/// What the agent's record says of each link. The record ties a session to the identifier of its
/// request and that identifier to the outcome. Any thread may call anything.
class OutcomeLedger {
 public:
  using Clock = std::chrono::steady_clock;

  /// The ways in which the record words the end of a request.
  enum class Outcome { success, status, error };

  struct Link {
    Clock::time_point opened;
    int requests = 0;
    int outcomes = 0;
    Outcome outcome = Outcome::error;
    Clock::duration time{};
  };

  /// Sessions are numbered from 0 to `sessions` - 1.
  explicit OutcomeLedger(std::size_t sessions) : links_(sessions) {}

  /// Tells that the link of this session is opened now.
  void opened(std::size_t session);

  /// Reads one line of the record.
  void read(std::string_view line);

  Link link(std::size_t session) const;

  /// How many outcome lines there have been, and how many of them were those of no request.
  std::size_t outcomes() const;
  std::size_t strayOutcomes() const;

 private:
  void readRequest(std::string_view text);
  void readOutcome(std::string_view text);

  mutable std::mutex mutex_;
  std::vector<Link> links_;
  std::unordered_map<std::string, std::size_t> sessionOfRequest_;
  std::size_t outcomes_ = 0;
  std::size_t strayOutcomes_ = 0;
};

}  // namespace vendril::bench
