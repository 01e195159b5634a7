#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/freedesktop/CurlTransfer.h"
#include "platform/freedesktop/ProxyLookup.h"

namespace vendril {

class CurlMulti;

/// What other threads have for the event thread. Any thread may post; the thread that waits on the
/// attached `CurlMulti` takes.
class CurlMailbox {
 public:
  struct FoundProxy {
    std::string origin;
    ProxyAnswer answer;
  };
  struct Mail {
    std::vector<std::unique_ptr<CurlTransfer>> transfers;
    std::vector<FoundProxy> proxies;
    bool closing = false;

    bool isEmpty() const { return transfers.empty() && proxies.empty() && !closing; }
  };

  /// False, and the transfer is left where it is, when nobody will take it any more.
  bool post(std::unique_ptr<CurlTransfer>& transfer);
  void post(FoundProxy proxy);
  /// Asks the event thread to come to an end.
  void postClosing();

  Mail take();

  /// Wakes `waiter` up from now on when mail arrives.
  void attach(CurlMulti& waiter);
  /// Ends the taking of mail, for the reason that `failure` then gives. Returns what is left.
  Mail detach(std::string reason);
  /// Why no transfer is taken any more.
  std::string failure();

 private:
  void wakeUpIf(bool wasEmpty);

  std::mutex mutex_;
  Mail mail_;
  CurlMulti* waiter_ = nullptr;
  bool isDetached_ = false;
  std::string failure_;
};

}  // namespace vendril
