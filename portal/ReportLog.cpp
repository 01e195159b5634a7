#include "portal/ReportLog.h"

#include <algorithm>

namespace vendril::portal {

void ReportLog::add(Report report) {
  {
    const std::lock_guard lock(mutex_);
    report.number = ++latest_;
    entries_.push_back({report.number, std::make_shared<const std::string>(toJson(report))});
    bytes_ += entries_.back().json->size();
    forgetOldOnes();
  }
  changed_.notify_all();
}

void ReportLog::forgetOldOnes() {
  while (entries_.size() > kMostReports || (bytes_ > kMostBytes && entries_.size() > 1)) {
    bytes_ -= entries_.front().json->size();
    entries_.pop_front();
  }
}

std::optional<ReportLog::Entry> ReportLog::next(std::uint64_t last,
                                                std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  if (last > latest_) {
    last = 0;
  }
  changed_.wait_for(lock, patience, [&] { return closed_ || latest_ > last; });
  if (closed_ || latest_ <= last) {
    return std::nullopt;
  }
  return *std::find_if(entries_.begin(), entries_.end(),
                       [last](const Entry& entry) { return entry.number > last; });
}

void ReportLog::waitForClose(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, time, [this] { return closed_; });
}

void ReportLog::close() {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  changed_.notify_all();
}

bool ReportLog::isClosed() const {
  const std::lock_guard lock(mutex_);
  return closed_;
}

}  // namespace vendril::portal
