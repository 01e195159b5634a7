#pragma once

#include <sys/resource.h>

namespace vendril {

/// While it lives, this process can open nothing more.
class DescriptorsExhausted {
 public:
  DescriptorsExhausted();
  DescriptorsExhausted(const DescriptorsExhausted&) = delete;
  DescriptorsExhausted& operator=(const DescriptorsExhausted&) = delete;
  ~DescriptorsExhausted();

 private:
  rlimit before_{};
};

}  // namespace vendril
