#include <cstdint>

#include "app/ZQN5VendrilAppDelegate.h"
#include "launcher/ZQN5Launcher.h"
#include "platform/Bundle.h"
#include "platform/Host.h"

namespace vendril {
namespace {

/// 4 MiB: an older log file that has grown past it is thrown away at start-up.
constexpr std::uint64_t kMaximumLogSize = 4'194'304;

}  // namespace

ZQN5ProtocolHandler& ZQN5VendrilAppDelegate::protocolHandler() const {
  return ZQN5ProtocolHandler::sharedInstance();
}

void ZQN5VendrilAppDelegate::setConfiguration(
    std::shared_ptr<ZQN5PublishedConfiguration> configuration) {
  configuration_ = std::move(configuration);
}

void ZQN5VendrilAppDelegate::setOperationQueue(std::shared_ptr<OperationQueue> queue) {
  operationQueue_ = std::move(queue);
}

void ZQN5VendrilAppDelegate::setLogger(std::shared_ptr<ZQN5SimpleLogger> logger) {
  logger_ = std::move(logger);
}

bool ZQN5VendrilAppDelegate::launchOnLogin() const {
  return ZQN5Launcher::launchOnLogin();
}

void ZQN5VendrilAppDelegate::setLaunchOnLogin(bool launchOnLogin) {
  ZQN5Launcher::setLaunchOnLogin(launchOnLogin, prefixedLoggerBlock());
}

LoggerBlock ZQN5VendrilAppDelegate::plainLoggerBlock() {
  return [weakDelegate = weak_from_this()](std::string_view message) {
    if (const auto delegate = weakDelegate.lock()) {
      delegate->logger()->log("%@", message);
    }
  };
}

LoggerBlock ZQN5VendrilAppDelegate::prefixedLoggerBlock() {
  return [delegate = shared_from_this()](std::string_view message) {
    delegate->logger()->log("[%@] %@%s", kClassName, message, "");
  };
}

std::optional<std::string> ZQN5VendrilAppDelegate::logPath(
    const std::optional<std::string>& directory, bool create) const {
  std::optional<std::string> file = Host::current().bundle().infoString("CFBundleName");
  if (file) {
    *file += ".log";
  }
  return ZQN5SimpleLogger::logPath(directory, file, kMaximumLogSize, create);
}

}  // namespace vendril
