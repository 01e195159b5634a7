#include "platform/freedesktop/ProxyStage.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

namespace vendril {
namespace {

/// Lookups that hang hold a thread each, and one origin at most one of them.
constexpr std::size_t kMaxLookups = 16;
constexpr const char* kNoProxy = "";

ProxyAnswer askGuarded(const ProxyResolver& resolver, const std::string& url) {
  try {
    return resolver(url);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

ProxyStage::ProxyStage(ProxyResolver resolver, std::chrono::milliseconds lookupTime, Reply reply)
    : resolver_(std::move(resolver)), lookupTime_(lookupTime), reply_(std::move(reply)) {
  if (resolver_.prepare()) {
    workers().addOperation(resolver_.prepare());
  }
}

ProxyStage::~ProxyStage() {
  if (workers_ != nullptr) {
    workers_->abandon();
  }
}

void ProxyStage::add(std::unique_ptr<CurlTransfer> transfer) {
  if (environmentNamesProxy(transfer->origin())) {
    ready_.push_back(std::move(transfer));
    return;
  }
  const auto lookup = lookups_.find(transfer->origin());
  if (onlyProxy_ || (lookup != lookups_.end() && lookup->second.isOverdue)) {
    transfer->setProxy(onlyProxy_.value_or(kNoProxy));
    ready_.push_back(std::move(transfer));
    return;
  }
  if (lookup == lookups_.end()) {
    ask(transfer->origin());
  }
  lookups_.at(transfer->origin()).waiting.push_back(std::move(transfer));
}

void ProxyStage::answered(const std::string& origin, const ProxyAnswer& answer) {
  if (answer.always) {
    keepForEver(proxyForCurl(answer));
  } else if (auto lookup = lookups_.extract(origin)) {
    release(std::move(lookup.mapped().waiting), proxyForCurl(answer));
  }
}

ProxyStage::Transfers ProxyStage::takeReady(Clock::time_point now) {
  for (auto& [origin, lookup] : lookups_) {
    if (lookup.deadline <= now) {
      lookup.isOverdue = true;
      release(std::exchange(lookup.waiting, {}), kNoProxy);
    }
  }
  return std::exchange(ready_, {});
}

std::optional<ProxyStage::Clock::time_point> ProxyStage::nextDeadline() const {
  std::optional<Clock::time_point> next;
  for (const auto& [origin, lookup] : lookups_) {
    if (!lookup.waiting.empty()) {
      next = std::min(next.value_or(lookup.deadline), lookup.deadline);
    }
  }
  return next;
}

void ProxyStage::ask(const std::string& origin) {
  lookups_[origin].deadline = Clock::now() + lookupTime_;
  workers().addOperation([resolver = resolver_, reply = reply_, origin] {
    reply(origin, askGuarded(resolver, origin + "/"));
  });
}

ThreadOperationQueue& ProxyStage::workers() {
  if (workers_ == nullptr) {
    workers_ = std::make_unique<ThreadOperationQueue>(kMaxLookups);
  }
  return *workers_;
}

void ProxyStage::release(Transfers transfers, const std::string& proxy) {
  for (auto& transfer : transfers) {
    transfer->setProxy(proxy);
  }
  std::move(transfers.begin(), transfers.end(), std::back_inserter(ready_));
}

void ProxyStage::keepForEver(const std::string& proxy) {
  onlyProxy_ = proxy;
  for (auto& [origin, lookup] : std::exchange(lookups_, {})) {
    release(std::move(lookup.waiting), proxy);
  }
  if (workers_ != nullptr) {
    workers_->abandon();
    workers_.reset();
  }
}

}  // namespace vendril
