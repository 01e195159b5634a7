#include "platform/freedesktop/CurlEventThread.h"

#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigfillset is not in <csignal>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "platform/freedesktop/CurlMulti.h"
#include "platform/freedesktop/ProxyStage.h"
#include "platform/freedesktop/TransferQueue.h"

namespace vendril {
namespace {

/// As tools that list threads show it; at most 15 characters.
constexpr const char* kThreadName = "vendril-http";

/// Signals are for the main thread; and TLS may write to a socket whose other end has gone, which
/// must not raise SIGPIPE.
void blockSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

/// The way of a transfer: mailbox, proxy, queue, socket.
class EventLoop {
 public:
  EventLoop(const CurlLimits& limits, ProxyResolver resolver, std::shared_ptr<CurlMailbox> mailbox)
      : limits_(limits),
        mailbox_(std::move(mailbox)),
        proxies_(std::move(resolver), limits.proxyLookupTime, replyTo(mailbox_)),
        multi_(limits_),
        queue_(limits.maxSockets, limits.maxSocketsPerOrigin) {}

  void run() {
    if (multi_.setUpFailure().empty()) {
      mailbox_->attach(multi_);
      carryTransfers();
    }
    const std::string reason =
        multi_.setUpFailure().empty() ? "The request was cancelled" : multi_.setUpFailure();
    for (const auto& transfer : mailbox_->detach(reason).transfers) {
      transfer->fail(reason);
    }
  }

 private:
  using Clock = ProxyStage::Clock;

  static ProxyStage::Reply replyTo(std::shared_ptr<CurlMailbox> mailbox) {
    return [mailbox = std::move(mailbox)](std::string origin, ProxyAnswer answer) {
      mailbox->post({std::move(origin), std::move(answer)});
    };
  }

  void carryTransfers() {
    do {
      takeMail();
      advance();
    } while (!isFinished() && multi_.wait(waitLimit()));
  }

  void takeMail() {
    CurlMailbox::Mail mail = mailbox_->take();
    for (auto& transfer : mail.transfers) {
      proxies_.add(std::move(transfer));
    }
    for (const auto& [origin, answer] : mail.proxies) {
      proxies_.answered(origin, answer);
    }
    if (mail.closing) {
      end_ = Clock::now() + limits_.drainTime;
    }
  }

  void advance() {
    for (auto& transfer : proxies_.takeReady(Clock::now())) {
      const std::string origin = transfer->origin();
      queue_.add(origin, std::move(transfer));
    }
    bool hasFreedSockets = false;
    do {
      startTransfers();
      const std::vector<std::string> ended = multi_.perform();
      for (const std::string& origin : ended) {
        queue_.finished(origin);
      }
      hasFreedSockets = !ended.empty();
    } while (hasFreedSockets && queue_.isWaiting());
  }

  void startTransfers() {
    while (auto transfer = queue_.startNext()) {
      const std::string origin = (*transfer)->origin();
      if (!multi_.start(std::move(*transfer))) {
        queue_.finished(origin);
      }
    }
  }

  bool isFinished() const {
    const bool isBusy = multi_.isBusy() || queue_.isWaiting() || proxies_.nextDeadline();
    return end_ && (!isBusy || *end_ <= Clock::now());
  }

  /// Rounded up, or the last millisecond would be spent turning round.
  std::optional<std::chrono::milliseconds> waitLimit() const {
    std::optional<Clock::time_point> next = proxies_.nextDeadline();
    if (end_) {
      next = std::min(next.value_or(*end_), *end_);
    }
    if (!next) {
      return std::nullopt;
    }
    return std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now());
  }

  const CurlLimits limits_;
  std::shared_ptr<CurlMailbox> mailbox_;
  /// Goes first: the resolver is prepared on another thread while libcurl is loaded on this one.
  ProxyStage proxies_;
  CurlMulti multi_;
  TransferQueue<std::unique_ptr<CurlTransfer>> queue_;
  /// When a closing thread stops waiting for transfers.
  std::optional<Clock::time_point> end_;
};

}  // namespace

CurlEventThread::CurlEventThread(const CurlLimits& limits, ProxyResolver resolver)
    : thread_([limits, resolver = std::move(resolver), mailbox = mailbox_]() mutable {
        blockSignals();
        pthread_setname_np(pthread_self(), kThreadName);
        EventLoop(limits, std::move(resolver), std::move(mailbox)).run();
      }) {}

CurlEventThread::~CurlEventThread() {
  mailbox_->postClosing();
  thread_.join();
}

}  // namespace vendril
