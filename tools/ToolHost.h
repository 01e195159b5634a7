#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Host.h"
#include "platform/UrlConnection.h"
#include "platform/freedesktop/AutostartLoginItems.h"
#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/ExecutableBundle.h"
#include "platform/freedesktop/GioLaunchServices.h"
#include "platform/freedesktop/GlibUuidGenerator.h"
#include "platform/freedesktop/PlistFiles.h"
#include "platform/freedesktop/PlistUserDefaults.h"
#include "platform/freedesktop/UnixProcessInfo.h"
#include "platform/freedesktop/XdgUserDirectories.h"

namespace vendril::tools {

/// Takes requests as the network would, and keeps them unsent.
class UnsentRequests : public UrlConnection {
 public:
  std::vector<UrlRequest> requests;

  void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> /*queue*/,
                               CompletionHandler /*handler*/) override {
    requests.push_back(std::move(request));
  }
};

/// The desktop as the tool sees it: the agent's own services, so that the agent's classes work on
/// it as they do in the agent, but for the log, which is the tool's, and the network, which sends
/// nothing. The bundle is the agent's. Main thread only.
class ToolHost : public Host {
 public:
  /// `log` outlives the host.
  ToolHost(int argc, char** argv, SystemLog& log);
  ToolHost(const ToolHost&) = delete;
  ToolHost& operator=(const ToolHost&) = delete;
  ~ToolHost() override = default;

  UnsentRequests& unsentRequests() { return urlConnection_; }

  /// The tool is no application: throws std::logic_error, as do the two that make something.
  Application& application() override;
  std::shared_ptr<Alert> makeAlert() override;
  std::shared_ptr<OperationQueue> makeOperationQueue() override;

  Bundle& bundle() override { return bundle_; }
  LaunchServices& launchServices() override { return launchServices_; }
  ProcessInfo& processInfo() override { return processInfo_; }
  PropertyListFiles& propertyListFiles() override { return propertyListFiles_; }
  SessionLoginItems& sessionLoginItems() override { return sessionLoginItems_; }
  SystemLog& systemLog() override { return log_; }
  UrlConnection& urlConnection() override { return urlConnection_; }
  UrlEvents& urlEvents() override { return urlEvents_; }
  UserDefaults& userDefaults() override { return userDefaults_; }
  UserDirectories& userDirectories() override { return userDirectories_; }
  UuidGenerator& uuidGenerator() override { return uuidGenerator_; }

 private:
  SystemLog& log_;
  UnixProcessInfo processInfo_;
  ExecutableBundle bundle_;
  PlistFiles propertyListFiles_;
  XdgUserDirectories userDirectories_;
  PlistUserDefaults userDefaults_;
  GioLaunchServices launchServices_;
  AutostartLoginItems sessionLoginItems_;
  GlibUuidGenerator uuidGenerator_;
  DesktopUrlEvents urlEvents_;
  UnsentRequests urlConnection_;
};

}  // namespace vendril::tools
