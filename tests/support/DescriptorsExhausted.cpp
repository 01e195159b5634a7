#include "support/DescriptorsExhausted.h"

#include <fcntl.h>

#include "support/UniqueFd.h"

namespace vendril {

DescriptorsExhausted::DescriptorsExhausted() {
  ::getrlimit(RLIMIT_NOFILE, &before_);
  // New descriptors get the lowest free number, and the limit is one on numbers.
  const UniqueFd lowestFree(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  const rlimit limit{static_cast<rlim_t>(lowestFree.get()), before_.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

DescriptorsExhausted::~DescriptorsExhausted() {
  ::setrlimit(RLIMIT_NOFILE, &before_);
}

}  // namespace vendril
