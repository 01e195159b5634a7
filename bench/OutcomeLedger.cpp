#include "bench/OutcomeLedger.h"

#include <cstdlib>

namespace vendril::bench {
namespace {

constexpr std::string_view kRequest = "] Sending POST request ";
constexpr std::string_view kOutcome = "] Request ";
constexpr std::string_view kSession = "session_id=";

/// What follows the first `mark` in `text`; nothing when it is not there.
std::optional<std::string_view> after(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string_view::npos ? std::nullopt : std::optional(text.substr(at + mark.size()));
}

std::string_view firstWord(std::string_view text) {
  return text.substr(0, text.find(' '));
}

/// Nothing when the words, which follow the request's identifier, tell of no end.
std::optional<OutcomeLedger::Outcome> outcomeIn(std::string_view words) {
  if (words.starts_with("has been successfully sent with HTTP status code: 200")) {
    return OutcomeLedger::Outcome::success;
  }
  if (words.starts_with("failed with HTTP status code: ")) {
    return OutcomeLedger::Outcome::status;
  }
  if (words.starts_with("failed with error: ")) {
    return OutcomeLedger::Outcome::error;
  }
  return std::nullopt;
}

}  // namespace

void OutcomeLedger::opened(std::size_t session) {
  const std::lock_guard lock(mutex_);
  links_.at(session).opened = Clock::now();
}

void OutcomeLedger::read(std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (const auto request = after(line, kRequest)) {
    readRequest(*request);
  } else if (const auto outcome = after(line, kOutcome)) {
    readOutcome(*outcome);
  }
}

void OutcomeLedger::readRequest(std::string_view text) {
  if (const auto number = after(text, kSession)) {
    const std::size_t session = std::strtoul(std::string(*number).c_str(), nullptr, 10);
    ++links_.at(session).requests;
    sessionOfRequest_[std::string(firstWord(text))] = session;
  }
}

void OutcomeLedger::readOutcome(std::string_view text) {
  const std::string_view identifier = firstWord(text);
  const std::optional<Outcome> outcome = outcomeIn(after(text, " ").value_or(""));
  if (!outcome) {
    return;
  }
  ++outcomes_;
  const auto entry = sessionOfRequest_.find(std::string(identifier));
  if (entry == sessionOfRequest_.end()) {
    ++strayOutcomes_;
    return;
  }
  Link& link = links_.at(entry->second);
  ++link.outcomes;
  link.outcome = *outcome;
  link.time = Clock::now() - link.opened;
}

OutcomeLedger::Link OutcomeLedger::link(std::size_t session) const {
  const std::lock_guard lock(mutex_);
  return links_.at(session);
}

std::size_t OutcomeLedger::outcomes() const {
  const std::lock_guard lock(mutex_);
  return outcomes_;
}

std::size_t OutcomeLedger::strayOutcomes() const {
  const std::lock_guard lock(mutex_);
  return strayOutcomes_;
}

}  // namespace vendril::bench
