#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vendril::portal {

/// A request that the portal took for a report, as it came.
struct Report {
  /// Counts the reports of a portal from 1 on; given by the ReportLog.
  std::uint64_t number = 0;
  /// When it arrived: UTC, as in 2026-11-21T09:30:00.123Z.
  std::string time;
  std::string method;
  /// The target of the request line, query included.
  std::string target;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  /// The answer in words, as in "status 200 after 10 s".
  std::string answer;
  /// Whether the agent will take the answer for a success.
  bool successful = false;
};

/// The present time in the form of Report::time.
std::string currentTime();

/// The report and the decoded fields of its form as a JSON object without line breaks. Bytes that
/// are not UTF-8 become replacement characters.
std::string toJson(const Report& report);

/// The report for a terminal, with "?" in the place of every control character, line or paragraph
/// separator and mark that changes the direction of writing: they would let a sender write to the
/// terminal as it likes. Bytes that are not UTF-8 become replacement characters.
std::string toText(const Report& report);

}  // namespace vendril::portal
