#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/freedesktop/CurlLimits.h"
#include "platform/freedesktop/CurlMailbox.h"
#include "platform/freedesktop/CurlTransfer.h"
#include "platform/freedesktop/ProxyLookup.h"

namespace vendril {

/// The thread that carries all transfers. While there are none it is blocked without a timer. The
/// object itself belongs to the thread that made it.
class CurlEventThread {
 public:
  /// Throws std::system_error when no thread can be made.
  CurlEventThread(const CurlLimits& limits, ProxyResolver resolver);
  CurlEventThread(const CurlEventThread&) = delete;
  CurlEventThread& operator=(const CurlEventThread&) = delete;
  /// Gives the transfers their time to drain and cancels those that are left then.
  ~CurlEventThread();

  /// Hands a transfer over. False, and it is left where it is, when the thread has ended because
  /// libcurl failed.
  bool post(std::unique_ptr<CurlTransfer>& transfer) { return mailbox_->post(transfer); }
  /// Why it has ended.
  std::string failure() const { return mailbox_->failure(); }

 private:
  /// Shared with lookups of proxies, which may outlive the thread.
  std::shared_ptr<CurlMailbox> mailbox_ = std::make_shared<CurlMailbox>();
  std::thread thread_;
};

}  // namespace vendril
