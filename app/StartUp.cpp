#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/Application.h"
#include "platform/Host.h"
#include "platform/ProcessInfo.h"
#include "platform/UserDefaults.h"

namespace vendril {

void ZQN5VendrilAppDelegate::applicationWillFinishLaunching() {
  Host& host = Host::current();
  startTime_ = host.processInfo().currentDate();
  logger_ = std::make_shared<ZQN5SimpleLogger>(
      logPath(host.userDefaults().stringForKey("LogDirectory"), true));
  configuration_ = std::make_shared<ZQN5PublishedConfiguration>(plainLoggerBlock());
  allowedCharacters_ = charactersOfForms();
  operationQueue_ = host.makeOperationQueue();
  searchForBreltoOrvanta_ = true;

  ZQN5ProtocolHandler& handler = protocolHandler();
  handler.setEventBlock(
      [weakDelegate = weak_from_this()](const Url& link, std::optional<Date> /*arrival*/) {
        if (const auto delegate = weakDelegate.lock()) {
          delegate->process(link);
        }
      });
  handler.setLoggerBlock(plainLoggerBlock());
}

void ZQN5VendrilAppDelegate::applicationDidFinishLaunching() {
  const bool addToLoginItems = readCommandLine();
  if (addToLoginItems) {
    addToLoginItemsIfNeeded();
  } else {
    logger_->log("[%@] Application will not be added to login items%s", kClassName, "");
  }
  if (registerSchemesIfNeeded()) {
    protocolHandler().start();
  } else {
    Host::current().application().terminate();
  }
}

void ZQN5VendrilAppDelegate::applicationWillTerminate() {
  protocolHandler().pause();
}

/// Returns whether the application may be added to the login items.
bool ZQN5VendrilAppDelegate::readCommandLine() {
  bool addToLoginItems = true;
  for (const std::string& argument : Host::current().processInfo().arguments()) {
    if (argument == "dont-search-for-brelto-orvanta") {
      searchForBreltoOrvanta_ = false;
    } else if (argument == "dont-add-to-login-items") {
      addToLoginItems = false;
    }
  }
  return addToLoginItems;
}

void ZQN5VendrilAppDelegate::addToLoginItemsIfNeeded() {
  if (launchOnLogin()) {
    return;
  }
  logger_->log("[%@] Application is not added to login items%s", kClassName, "");
  setLaunchOnLogin(true);
  if (launchOnLogin()) {
    logger_->log("[%@] Successfully added application to login items%s", kClassName, "");
  } else {
    logger_->log("[%@] Failed to add application to login items%s", kClassName, "");
  }
}

bool ZQN5VendrilAppDelegate::registerSchemesIfNeeded() {
  if (protocolHandler().isRegisteredForAllSupportedURLSchemes()) {
    return true;
  }
  logger_->log("[%@] Application is not registered for all supported protocol schemes%s",
               kClassName, "");
  if (!protocolHandler().registerForAllSupportedURLSchemes()) {
    logger_->log("[%@] Failed to register for supported protocol schemes%s", kClassName, "");
    return false;
  }
  logger_->log("[%@] Successfully registered for supported protocol schemes%s", kClassName, "");
  return true;
}

}  // namespace vendril
