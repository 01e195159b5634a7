#pragma once

#include <memory>

#include "platform/Host.h"
#include "platform/freedesktop/AutostartLoginItems.h"
#include "platform/freedesktop/CurlUrlConnection.h"
#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/GioLaunchServices.h"
#include "platform/freedesktop/GlibUuidGenerator.h"
#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistUserDefaults.h"
#include "platform/freedesktop/ThreadOperationQueue.h"
#include "platform/freedesktop/XdgUserDirectories.h"
#include "support/FakeAlert.h"
#include "support/FakeApplication.h"
#include "support/FakeBundle.h"
#include "support/FakeProcess.h"
#include "support/FakeSystemLog.h"

namespace vendril {

/// The services of a freedesktop.org desktop in one process: the real ones, but for the bundle, the
/// process, the application, the alert and the log, which a test wants to set or to read. Installs
/// itself for as long as it lives. Made after the private home that it works in.
class RealHost : public Host {
 public:
  RealHost() { install(this); }
  RealHost(const RealHost&) = delete;
  RealHost& operator=(const RealHost&) = delete;
  ~RealHost() override { install(nullptr); }

  FakeApplication fakeApplication;
  FakeBundle fakeBundle;
  FakeProcessInfo fakeProcessInfo;
  FakeSystemLog fakeSystemLog;
  FakeAlert fakeAlert;
  ThreadOperationQueue realQueue;
  GioLaunchServices realLaunchServices;
  PlistFiles realPropertyListFiles;
  AutostartLoginItems realSessionLoginItems{fakeBundle};
  DesktopUrlEvents realUrlEvents{fakeSystemLog};
  XdgUserDirectories realUserDirectories;
  PlistUserDefaults realUserDefaults{userDefaultsPath(realUserDirectories, "com.brelto.vendril"),
                                     realPropertyListFiles, fakeSystemLog};
  GlibUuidGenerator realUuidGenerator;
  std::unique_ptr<CurlUrlConnection> realUrlConnection = std::make_unique<CurlUrlConnection>();

  /// Puts `service`, which outlives the host's use, in the place of the one of its kind.
  void use(Alert& service) { alert_ = &service; }
  void use(Application& service) { application_ = &service; }
  void use(Bundle& service) { bundle_ = &service; }
  void use(LaunchServices& service) { launchServices_ = &service; }
  void use(OperationQueue& service) { operationQueue_ = &service; }
  void use(ProcessInfo& service) { processInfo_ = &service; }
  void use(PropertyListFiles& service) { propertyListFiles_ = &service; }
  void use(SessionLoginItems& service) { sessionLoginItems_ = &service; }
  void use(SystemLog& service) { systemLog_ = &service; }
  void use(UrlConnection& service) { urlConnection_ = &service; }
  void use(UrlEvents& service) { urlEvents_ = &service; }
  void use(UserDefaults& service) { userDefaults_ = &service; }
  void use(UserDirectories& service) { userDirectories_ = &service; }
  void use(UuidGenerator& service) { uuidGenerator_ = &service; }

  Application& application() override { return *application_; }
  Bundle& bundle() override { return *bundle_; }
  LaunchServices& launchServices() override { return *launchServices_; }
  ProcessInfo& processInfo() override { return *processInfo_; }
  PropertyListFiles& propertyListFiles() override { return *propertyListFiles_; }
  SessionLoginItems& sessionLoginItems() override { return *sessionLoginItems_; }
  SystemLog& systemLog() override { return *systemLog_; }
  UrlConnection& urlConnection() override { return *urlConnection_; }
  UrlEvents& urlEvents() override { return *urlEvents_; }
  UserDefaults& userDefaults() override { return *userDefaults_; }
  UserDirectories& userDirectories() override { return *userDirectories_; }
  UuidGenerator& uuidGenerator() override { return *uuidGenerator_; }

  /// The host keeps what these answer.
  std::shared_ptr<Alert> makeAlert() override { return {std::shared_ptr<void>(), alert_}; }
  std::shared_ptr<OperationQueue> makeOperationQueue() override {
    return {std::shared_ptr<void>(), operationQueue_};
  }

 private:
  Alert* alert_ = &fakeAlert;
  Application* application_ = &fakeApplication;
  Bundle* bundle_ = &fakeBundle;
  LaunchServices* launchServices_ = &realLaunchServices;
  OperationQueue* operationQueue_ = &realQueue;
  ProcessInfo* processInfo_ = &fakeProcessInfo;
  PropertyListFiles* propertyListFiles_ = &realPropertyListFiles;
  SessionLoginItems* sessionLoginItems_ = &realSessionLoginItems;
  SystemLog* systemLog_ = &fakeSystemLog;
  UrlConnection* urlConnection_ = realUrlConnection.get();
  UrlEvents* urlEvents_ = &realUrlEvents;
  UserDefaults* userDefaults_ = &realUserDefaults;
  UserDirectories* userDirectories_ = &realUserDirectories;
  UuidGenerator* uuidGenerator_ = &realUuidGenerator;
};

}  // namespace vendril
