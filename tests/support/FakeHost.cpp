#include "support/FakeHost.h"

namespace vendril {

std::shared_ptr<Alert> FakeHost::makeAlert() {
  auto alert = std::make_shared<FakeAlert>();
  if (prepareAlert) {
    prepareAlert(*alert);
  }
  alerts.push_back(alert);
  return alert;
}

std::shared_ptr<OperationQueue> FakeHost::makeOperationQueue() {
  auto queue = std::make_shared<FakeOperationQueue>();
  operationQueues.push_back(queue);
  return queue;
}

}  // namespace vendril
