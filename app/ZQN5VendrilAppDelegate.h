#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config/ZQN5PublishedConfiguration.h"
#include "logging/ZQN5SimpleLogger.h"
#include "platform/Alert.h"
#include "platform/Application.h"
#include "platform/Date.h"
#include "platform/LoggerBlock.h"
#include "platform/OperationQueue.h"
#include "platform/PercentEncoding.h"
#include "platform/PropertyList.h"
#include "platform/Url.h"
#include "platform/UrlConnection.h"
#include "platform/Window.h"
#include "protocol/ZQN5ProtocolHandler.h"

namespace vendril {

/// The application delegate: owns the logger, the published configuration and the queue of request
/// completions, and turns each link into one request to the portal. Main thread only, but for the
/// completions of requests, which hold it weakly. Owned by a shared pointer.
class ZQN5VendrilAppDelegate : public ApplicationDelegate,
                               public std::enable_shared_from_this<ZQN5VendrilAppDelegate> {
 public:
  static constexpr const char* kClassName = "ZQN5VendrilAppDelegate";

  /// The entries of a link that a request needs: "portalURI" and "session_id".
  using Parameters = std::map<std::string, std::string>;
  /// Keys and values of a form, in the order in which they are sent.
  using Payload = std::vector<std::pair<std::string, std::string>>;

  // Start-up and shut-down.
  void applicationWillFinishLaunching() override;
  void applicationDidFinishLaunching() override;
  void applicationWillTerminate() override;

  // State.
  std::weak_ptr<Window> window() const { return window_; }
  void setWindow(std::weak_ptr<Window> window) { window_ = std::move(window); }
  /// When launching began; nothing before that.
  std::optional<Date> startTime() const { return startTime_; }
  /// The process-wide handler.
  ZQN5ProtocolHandler& protocolHandler() const;
  std::shared_ptr<ZQN5PublishedConfiguration> configuration() const { return configuration_; }
  void setConfiguration(std::shared_ptr<ZQN5PublishedConfiguration> configuration);
  std::shared_ptr<OperationQueue> operationQueue() const { return operationQueue_; }
  void setOperationQueue(std::shared_ptr<OperationQueue> queue);
  std::shared_ptr<ZQN5SimpleLogger> logger() const { return logger_; }
  void setLogger(std::shared_ptr<ZQN5SimpleLogger> logger);
  const CharacterSet& allowedCharacters() const { return allowedCharacters_; }
  void setAllowedCharacters(const CharacterSet& characters) { allowedCharacters_ = characters; }
  bool searchForBreltoOrvanta() const { return searchForBreltoOrvanta_; }
  void setSearchForBreltoOrvanta(bool search) { searchForBreltoOrvanta_ = search; }
  /// Asks the login items on every read.
  bool launchOnLogin() const;
  void setLaunchOnLogin(bool launchOnLogin);
  std::shared_ptr<Alert> errorAlert() const { return errorAlert_; }
  void setErrorAlert(std::shared_ptr<Alert> alert) { errorAlert_ = std::move(alert); }

  /// A block that logs its message as it stands for as long as the delegate lives.
  LoggerBlock plainLoggerBlock();
  /// A block that puts the class name before its message, and keeps the delegate.
  LoggerBlock prefixedLoggerBlock();

  /// The path of the log file in `directory`; with `create`, a path that is ready to be opened.
  std::optional<std::string> logPath(const std::optional<std::string>& directory,
                                     bool create) const;

  // One link, from its text to the request.
  void process(const Url& link);
  bool load();
  std::optional<Parameters> parse(const Url& link) const;

  // The request to the portal.
  void sendRequest(const std::optional<std::string>& portalURI,
                   const std::optional<std::string>& sessionID,
                   const std::optional<std::string>& data);
  std::optional<std::string> dataFromPayload(const std::optional<Payload>& payload) const;
  std::string escape(const std::string& text) const;
  /// The characters that stand in a form as they are: those of a URL's path without & + and =.
  static CharacterSet charactersOfForms();
  static std::string generateUUIDString();

  /// Tells the user that the portal could not be reached and returns when that is confirmed. Shows
  /// one alert at a time.
  void showAlert();

 private:
  bool readCommandLine();
  void addToLoginItemsIfNeeded();
  bool registerSchemesIfNeeded();
  PropertyList::Dictionary processDetails() const;
  void logOutcome(const std::string& request, const std::optional<UrlResponse>& response,
                  const std::optional<std::string>& data,
                  const std::optional<UrlError>& error) const;

  std::weak_ptr<Window> window_;
  std::optional<Date> startTime_;
  std::shared_ptr<ZQN5PublishedConfiguration> configuration_;
  std::shared_ptr<OperationQueue> operationQueue_;
  std::shared_ptr<ZQN5SimpleLogger> logger_;
  CharacterSet allowedCharacters_;
  bool searchForBreltoOrvanta_ = false;
  std::shared_ptr<Alert> errorAlert_;
};

}  // namespace vendril
