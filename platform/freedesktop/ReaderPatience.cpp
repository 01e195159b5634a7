#include "platform/freedesktop/ReaderPatience.h"

#include <poll.h>

namespace vendril {
namespace {

constexpr int kRoomLimitMilliseconds = 100;

}  // namespace

bool ReaderPatience::waitForRoom(int descriptor) noexcept {
  pollfd target{descriptor, POLLOUT, 0};
  const int limit = stuck_.load(std::memory_order_relaxed) ? 0 : kRoomLimitMilliseconds;
  const bool room = ::poll(&target, 1, limit) > 0;
  if (!room) {
    stuck_.store(true, std::memory_order_relaxed);
  }
  return room;
}

}  // namespace vendril
