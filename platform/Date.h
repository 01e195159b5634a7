#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace vendril {

/// A moment in time; the platform's wall clock.
using Date = std::chrono::system_clock::time_point;

/// The date as log messages show it: "yyyy-MM-dd HH:mm:ss +0000", always in UTC.
std::string description(Date date);

/// Formats dates in the process's local time zone after a pattern made of the fields yyyy, MM, dd,
/// HH, mm, ss and SSS; every other character stands for itself. Immutable, so that any thread may
/// use one instance at the same time as any other.
class DateFormatter {
 public:
  explicit DateFormatter(std::string_view pattern) : pattern_(pattern) {}

  std::string stringFromDate(Date date) const;
  const std::string& pattern() const { return pattern_; }

 private:
  std::string pattern_;
};

}  // namespace vendril
