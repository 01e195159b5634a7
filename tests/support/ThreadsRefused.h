#pragma once

#include <pthread.h>

namespace vendril {

/// While it lives, every attempt of this process to create a thread fails.
class ThreadsRefused {
 public:
  ThreadsRefused();
  ThreadsRefused(const ThreadsRefused&) = delete;
  ThreadsRefused& operator=(const ThreadsRefused&) = delete;
  ~ThreadsRefused();

 private:
  pthread_attr_t before_{};
};

}  // namespace vendril
