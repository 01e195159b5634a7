#include "platform/freedesktop/UnixProcessInfo.h"

#include <chrono>

namespace vendril {

Date UnixProcessInfo::currentDate() const {
  return std::chrono::system_clock::now();
}

}  // namespace vendril
