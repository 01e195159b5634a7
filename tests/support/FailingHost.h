#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "support/FakeHost.h"

namespace vendril {

/// Forwards to a fake host, whose service of the test's choice breaks once. Installs itself for as
/// long as it lives, and gives the fake host its place back.
class FailingHost : public Host {
 public:
  explicit FailingHost(FakeHost& host) : host_(host) { install(this); }
  FailingHost(const FailingHost&) = delete;
  FailingHost& operator=(const FailingHost&) = delete;
  ~FailingHost() override { install(&host_); }

  /// Runs `fault`, which throws, at the use of `service` that is number `use` from now on, from 1.
  void breakService(const void* service, int use, std::function<void()> fault) {
    broken_ = service;
    usesLeft_ = use;
    fault_ = std::move(fault);
  }

  Application& application() override { return used(host_.fakeApplication); }
  Bundle& bundle() override { return used(host_.fakeBundle); }
  LaunchServices& launchServices() override { return used(host_.fakeLaunchServices); }
  ProcessInfo& processInfo() override { return used(host_.fakeProcessInfo); }
  PropertyListFiles& propertyListFiles() override { return used(host_.fakePropertyListFiles); }
  SessionLoginItems& sessionLoginItems() override { return used(host_.fakeSessionLoginItems); }
  SystemLog& systemLog() override { return used(host_.fakeSystemLog); }
  UrlConnection& urlConnection() override { return used(host_.fakeUrlConnection); }
  UrlEvents& urlEvents() override { return used(host_.fakeUrlEvents); }
  UserDefaults& userDefaults() override { return used(host_.fakeUserDefaults); }
  UserDirectories& userDirectories() override { return used(host_.fakeUserDirectories); }
  UuidGenerator& uuidGenerator() override { return used(host_.fakeUuidGenerator); }

  std::shared_ptr<Alert> makeAlert() override { return host_.makeAlert(); }
  std::shared_ptr<OperationQueue> makeOperationQueue() override {
    return host_.makeOperationQueue();
  }

 private:
  template <class Service>
  Service& used(Service& service) {
    if (static_cast<const void*>(&service) == broken_ && --usesLeft_ == 0) {
      fault_();
    }
    return service;
  }

  FakeHost& host_;
  const void* broken_ = nullptr;
  int usesLeft_ = 0;
  std::function<void()> fault_;
};

}  // namespace vendril
