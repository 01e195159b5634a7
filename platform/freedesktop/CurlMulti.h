#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/freedesktop/CurlHandles.h"
#include "platform/freedesktop/CurlLimits.h"
#include "platform/freedesktop/CurlTransfer.h"

namespace vendril {

/// The transfers that have a socket. Belongs to one thread, but for `wakeUp`.
class CurlMulti {
 public:
  /// `limits` outlives the object.
  explicit CurlMulti(const CurlLimits& limits);
  CurlMulti(const CurlMulti&) = delete;
  CurlMulti& operator=(const CurlMulti&) = delete;
  /// The transfers that have not ended report that they were cancelled.
  ~CurlMulti();

  /// Why libcurl could not be set up, in which case nothing else may be called; empty when it was.
  const std::string& setUpFailure() const { return setUpFailure_; }

  /// Starts a transfer. One that cannot be started reports its failure; false then.
  bool start(std::unique_ptr<CurlTransfer> transfer);

  /// Does what can be done without waiting. Returns the origins of the transfers that have ended
  /// and reported it.
  std::vector<std::string> perform();

  /// Waits until there is something to do, or for `limit` when given, or until `wakeUp`. False when
  /// waiting is impossible.
  bool wait(std::optional<std::chrono::milliseconds> limit);

  /// Ends the present wait, or the next one. Any thread.
  void wakeUp() { curl().multi_wakeup(multi_.get()); }

  bool isBusy() const { return !running_.empty(); }

 private:
  /// The handle goes first: it points into the transfer.
  struct Running {
    std::unique_ptr<CurlTransfer> transfer;
    CurlEasyPtr easy;
  };

  CurlEasyPtr takeHandle();
  void keepHandle(CurlEasyPtr easy);
  std::string finish(CURL* easy, CURLcode result);

  const CurlLimits& limits_;
  CurlGlobal global_;
  CurlMultiPtr multi_;
  std::string setUpFailure_;
  /// Handles to use again, as new.
  std::vector<CurlEasyPtr> spareHandles_;
  std::unordered_map<CURL*, Running> running_;
};

}  // namespace vendril
