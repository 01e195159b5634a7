#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace vendril {

/// Puts the process into a time zone and back into its old one in the end. Only while no other
/// thread runs.
class ScopedTimeZone {
 public:
  /// `zone` as in the variable TZ, for example "UTC0".
  explicit ScopedTimeZone(const char* zone) {
    if (const char* old = std::getenv("TZ")) {
      old_ = old;
    }
    setenv("TZ", zone, 1);
    tzset();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
  ~ScopedTimeZone() {
    if (old_) {
      setenv("TZ", old_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> old_;
};

}  // namespace vendril
