#pragma once

#include <memory>

#include "platform/Host.h"
#include "platform/freedesktop/AutostartLoginItems.h"
#include "platform/freedesktop/CurlUrlConnection.h"
#include "platform/freedesktop/DesktopApplication.h"
#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/ExecutableBundle.h"
#include "platform/freedesktop/GioLaunchServices.h"
#include "platform/freedesktop/GlibMessages.h"
#include "platform/freedesktop/GlibUuidGenerator.h"
#include "platform/freedesktop/JournalSystemLog.h"
#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistUserDefaults.h"
#include "platform/freedesktop/StandardStreams.h"
#include "platform/freedesktop/UnixProcessInfo.h"
#include "platform/freedesktop/XdgUserDirectories.h"

namespace vendril {

/// The services of a freedesktop.org desktop, put together. Making one reads the environment, takes
/// out of it what this process must not follow, and opens the system log; in a process that the bus
/// has started it prepares the network. Everything else waits until it is used. Main thread only,
/// and made before the process has a second thread.
class FreedesktopHost : public Host {
 public:
  /// Reads the URL schemes that a bundle declares.
  using SchemeReader = std::function<std::set<std::string>(const Bundle& bundle)>;

  FreedesktopHost(int argc, char** argv, SchemeReader schemesOf);
  FreedesktopHost(const FreedesktopHost&) = delete;
  FreedesktopHost& operator=(const FreedesktopHost&) = delete;
  ~FreedesktopHost() override = default;

  /// Ends the network: gives the requests that are under way a little time, and then fails those
  /// that are left. All completions are on their queues when this returns.
  void finishRequests() { urlConnection_.reset(); }

  Application& application() override { return application_; }
  Bundle& bundle() override { return bundle_; }
  LaunchServices& launchServices() override { return launchServices_; }
  ProcessInfo& processInfo() override { return processInfo_; }
  PropertyListFiles& propertyListFiles() override { return propertyListFiles_; }
  SessionLoginItems& sessionLoginItems() override { return sessionLoginItems_; }
  SystemLog& systemLog() override { return systemLog_; }
  UrlConnection& urlConnection() override { return *urlConnection_; }
  UrlEvents& urlEvents() override { return urlEvents_; }
  UserDefaults& userDefaults() override { return userDefaults_; }
  UserDirectories& userDirectories() override { return userDirectories_; }
  UuidGenerator& uuidGenerator() override { return uuidGenerator_; }

  std::shared_ptr<Alert> makeAlert() override;
  std::shared_ptr<OperationQueue> makeOperationQueue() override;

 private:
  StandardStreams standardStreams_;
  JournalSystemLog systemLog_;
  GlibMessages glibMessages_{systemLog_};
  UnixProcessInfo processInfo_;
  ExecutableBundle bundle_;
  PlistFiles propertyListFiles_;
  XdgUserDirectories userDirectories_;
  PlistUserDefaults userDefaults_;
  GioLaunchServices launchServices_;
  AutostartLoginItems sessionLoginItems_;
  GlibUuidGenerator uuidGenerator_;
  DesktopUrlEvents urlEvents_;
  DesktopApplication application_;
  std::unique_ptr<CurlUrlConnection> urlConnection_;
};

}  // namespace vendril
