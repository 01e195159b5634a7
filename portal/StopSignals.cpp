#include "portal/StopSignals.h"

#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigwait is not in <csignal>

#include <utility>

namespace vendril::portal {

StopSignals::StopSignals(std::function<void()> block) {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    ::sigaddset(&signals, number);
  }
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  thread_ = std::jthread([signals, block = std::move(block)] {
    int number = 0;
    ::sigwait(&signals, &number);
    block();
  });
}

StopSignals::~StopSignals() {
  // Ends nothing but the waiting: the signal is blocked, and sigwait takes it.
  // NOLINTNEXTLINE(bugprone-bad-signal-to-kill-thread)
  ::pthread_kill(thread_.native_handle(), SIGTERM);
}

}  // namespace vendril::portal
