#include "support/ThreadsRefused.h"

#include <cstddef>

namespace vendril {
namespace {

/// Fits into no address space.
constexpr std::size_t kAbsurdStackSize = std::size_t{1} << 50U;

}  // namespace

ThreadsRefused::ThreadsRefused() {
  pthread_getattr_default_np(&before_);
  pthread_attr_t absurd;
  pthread_attr_init(&absurd);
  pthread_attr_setstacksize(&absurd, kAbsurdStackSize);
  pthread_setattr_default_np(&absurd);
  pthread_attr_destroy(&absurd);
}

ThreadsRefused::~ThreadsRefused() {
  pthread_setattr_default_np(&before_);
  pthread_attr_destroy(&before_);
}

}  // namespace vendril
