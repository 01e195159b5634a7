#include "platform/freedesktop/CurlMailbox.h"

#include <utility>

#include "platform/freedesktop/CurlMulti.h"

namespace vendril {

bool CurlMailbox::post(std::unique_ptr<CurlTransfer>& transfer) {
  const std::lock_guard lock(mutex_);
  if (isDetached_) {
    return false;
  }
  const bool wasEmpty = mail_.isEmpty();
  mail_.transfers.push_back(std::move(transfer));
  wakeUpIf(wasEmpty);
  return true;
}

void CurlMailbox::post(FoundProxy proxy) {
  const std::lock_guard lock(mutex_);
  const bool wasEmpty = mail_.isEmpty();
  mail_.proxies.push_back(std::move(proxy));
  wakeUpIf(wasEmpty);
}

void CurlMailbox::postClosing() {
  const std::lock_guard lock(mutex_);
  const bool wasEmpty = mail_.isEmpty();
  mail_.closing = true;
  wakeUpIf(wasEmpty);
}

CurlMailbox::Mail CurlMailbox::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(mail_, {});
}

void CurlMailbox::attach(CurlMulti& waiter) {
  const std::lock_guard lock(mutex_);
  waiter_ = &waiter;
}

CurlMailbox::Mail CurlMailbox::detach(std::string reason) {
  const std::lock_guard lock(mutex_);
  waiter_ = nullptr;
  isDetached_ = true;
  failure_ = std::move(reason);
  return std::exchange(mail_, {});
}

std::string CurlMailbox::failure() {
  const std::lock_guard lock(mutex_);
  return failure_;
}

/// Mail that was there before has woken the waiter up already.
void CurlMailbox::wakeUpIf(bool wasEmpty) {
  if (wasEmpty && waiter_ != nullptr) {
    waiter_->wakeUp();
  }
}

}  // namespace vendril
