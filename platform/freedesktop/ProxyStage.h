#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/CurlTransfer.h"
#include "platform/freedesktop/ProxyLookup.h"
#include "platform/freedesktop/ThreadOperationQueue.h"

namespace vendril {

/// Where transfers wait until their proxy is known. The resolver is asked once for all transfers to
/// one origin that wait at the same time, about the origin alone: paths and queries are nobody's
/// business. A transfer whose lookup fails or takes too long goes without a proxy, and so do later
/// ones to that origin while the lookup goes on. Belongs to one thread.
class ProxyStage {
 public:
  using Clock = std::chrono::steady_clock;
  using Transfers = std::vector<std::unique_ptr<CurlTransfer>>;
  /// Takes an answer to where `answered` can be called with it. Called on a worker thread, even
  /// after the stage is gone.
  using Reply = std::function<void(std::string origin, ProxyAnswer answer)>;

  /// Begins to prepare the resolver.
  ProxyStage(ProxyResolver resolver, std::chrono::milliseconds lookupTime, Reply reply);
  ProxyStage(const ProxyStage&) = delete;
  ProxyStage& operator=(const ProxyStage&) = delete;
  /// Waits for no lookup. Transfers that are left report that they were cancelled.
  ~ProxyStage();

  void add(std::unique_ptr<CurlTransfer> transfer);
  void answered(const std::string& origin, const ProxyAnswer& answer);

  /// The transfers that wait no longer at the time `now`.
  Transfers takeReady(Clock::time_point now);
  /// When the next transfer stops waiting for its answer; nothing when none waits.
  std::optional<Clock::time_point> nextDeadline() const;

 private:
  struct Lookup {
    Clock::time_point deadline;
    Transfers waiting;
    bool isOverdue = false;
  };

  void ask(const std::string& origin);
  ThreadOperationQueue& workers();
  void release(Transfers transfers, const std::string& proxy);
  void keepForEver(const std::string& proxy);

  ProxyResolver resolver_;
  std::chrono::milliseconds lookupTime_;
  Reply reply_;
  std::unique_ptr<ThreadOperationQueue> workers_;
  /// The proxy of every transfer, once it is known that there is but one answer.
  std::optional<std::string> onlyProxy_;
  std::map<std::string, Lookup> lookups_;
  Transfers ready_;
};

}  // namespace vendril
