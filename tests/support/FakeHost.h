#pragma once

#include <memory>
#include <vector>

#include "platform/Host.h"
#include "support/FakeAlert.h"
#include "support/FakeApplication.h"
#include "support/FakeBundle.h"
#include "support/FakeLaunchServices.h"
#include "support/FakeOperationQueue.h"
#include "support/FakeProcess.h"
#include "support/FakePropertyListFiles.h"
#include "support/FakeSessionLoginItems.h"
#include "support/FakeSystemLog.h"
#include "support/FakeUrlConnection.h"
#include "support/FakeUrlEvents.h"
#include "support/FakeUserDefaults.h"

namespace vendril {

/// A desktop in memory. Installs itself for as long as it lives; every service is a public member.
class FakeHost : public Host {
 public:
  FakeHost() { install(this); }
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;
  ~FakeHost() override { install(nullptr); }

  FakeApplication fakeApplication;
  FakeBundle fakeBundle;
  FakeLaunchServices fakeLaunchServices;
  FakeProcessInfo fakeProcessInfo;
  FakePropertyListFiles fakePropertyListFiles;
  FakeSessionLoginItems fakeSessionLoginItems;
  FakeSystemLog fakeSystemLog;
  FakeUrlConnection fakeUrlConnection;
  FakeUrlEvents fakeUrlEvents;
  FakeUserDefaults fakeUserDefaults;
  FakeUserDirectories fakeUserDirectories;
  FakeUuidGenerator fakeUuidGenerator;
  /// The alerts and queues that were asked for, in order.
  std::vector<std::shared_ptr<FakeAlert>> alerts;
  std::vector<std::shared_ptr<FakeOperationQueue>> operationQueues;
  /// Readies each new alert before it is handed out.
  std::function<void(FakeAlert&)> prepareAlert;

  Application& application() override { return fakeApplication; }
  Bundle& bundle() override { return fakeBundle; }
  LaunchServices& launchServices() override { return fakeLaunchServices; }
  ProcessInfo& processInfo() override { return fakeProcessInfo; }
  PropertyListFiles& propertyListFiles() override { return fakePropertyListFiles; }
  SessionLoginItems& sessionLoginItems() override { return fakeSessionLoginItems; }
  SystemLog& systemLog() override { return fakeSystemLog; }
  UrlConnection& urlConnection() override { return fakeUrlConnection; }
  UrlEvents& urlEvents() override { return fakeUrlEvents; }
  UserDefaults& userDefaults() override { return fakeUserDefaults; }
  UserDirectories& userDirectories() override { return fakeUserDirectories; }
  UuidGenerator& uuidGenerator() override { return fakeUuidGenerator; }

  std::shared_ptr<Alert> makeAlert() override;
  std::shared_ptr<OperationQueue> makeOperationQueue() override;
};

}  // namespace vendril
