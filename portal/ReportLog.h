#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "portal/Report.h"

namespace vendril::portal {

/// The latest reports, for any number of readers that each go through them at their own pace. Every
/// operation may be called from any thread.
class ReportLog {
 public:
  struct Entry {
    std::uint64_t number;
    std::shared_ptr<const std::string> json;
  };

  /// Older reports go when there are more than so many, or when their texts take more bytes; the
  /// latest one always stays.
  static constexpr std::size_t kMostReports = 50;
  static constexpr std::size_t kMostBytes = std::size_t{8} << 20U;

  /// Gives the report its number and keeps it.
  void add(Report report);

  /// The oldest report kept that came after number `last`, which it waits for; nothing when none
  /// came within `patience`, or the log was closed. A `last` that this log has not given out yet
  /// stands for another portal's and counts as 0.
  std::optional<Entry> next(std::uint64_t last, std::chrono::milliseconds patience);

  /// Waits until the log is closed, for `time` at most.
  void waitForClose(std::chrono::milliseconds time);

  /// Ends all waiting, now and later.
  void close();
  bool isClosed() const;

 private:
  void forgetOldOnes();

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Entry> entries_;
  std::uint64_t latest_ = 0;
  std::size_t bytes_ = 0;
  bool closed_ = false;
};

}  // namespace vendril::portal
