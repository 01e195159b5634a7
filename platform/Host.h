#pragma once

#include <memory>

namespace vendril {

class Alert;
class Application;
class Bundle;
class LaunchServices;
class OperationQueue;
class ProcessInfo;
class PropertyListFiles;
class SessionLoginItems;
class SystemLog;
class UrlConnection;
class UrlEvents;
class UserDefaults;
class UserDirectories;
class UuidGenerator;

/// Everything that the desktop gives, one service behind each operation. The services belong to the
/// host and live as long as it does; what the make… operations return belongs to the caller.
class Host {
 public:
  virtual ~Host() = default;

  virtual Application& application() = 0;
  virtual Bundle& bundle() = 0;
  virtual LaunchServices& launchServices() = 0;
  virtual ProcessInfo& processInfo() = 0;
  virtual PropertyListFiles& propertyListFiles() = 0;
  virtual SessionLoginItems& sessionLoginItems() = 0;
  virtual SystemLog& systemLog() = 0;
  virtual UrlConnection& urlConnection() = 0;
  virtual UrlEvents& urlEvents() = 0;
  virtual UserDefaults& userDefaults() = 0;
  virtual UserDirectories& userDirectories() = 0;
  virtual UuidGenerator& uuidGenerator() = 0;

  virtual std::shared_ptr<Alert> makeAlert() = 0;
  virtual std::shared_ptr<OperationQueue> makeOperationQueue() = 0;

  /// Makes `host` the one that `current` answers. The caller keeps it and uninstalls it, by
  /// installing null, before it goes away. Before any other thread uses the host.
  static void install(Host* host);

  /// The installed host; there must be one.
  static Host& current();
};

}  // namespace vendril
