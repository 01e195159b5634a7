#include <fmt/ranges.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "app/LinkParameters.h"
#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/PlatformException.h"
#include "platform/ProcessInfo.h"
#include "platform/UserDefaults.h"

namespace vendril {
namespace {

/// A dictionary takes no absent values.
PropertyList required(std::string_view key, std::optional<std::string> value) {
  if (!value) {
    throw PlatformException(kInvalidArgumentException,
                            "attempt to insert nil object for key '" + std::string(key) + "'");
  }
  return std::move(*value);
}

std::int64_t wholeSecondsBetween(Date start, Date end) {
  const std::chrono::duration<double> elapsed = end - start;
  return std::abs(static_cast<std::int64_t>(elapsed.count()));
}

}  // namespace

void ZQN5VendrilAppDelegate::process(const Url& link) {
  try {
    logger_->log("[%@] Process details:\n%@\n%s", kClassName, processDetails(), "");
    if (!load()) {
      return;
    }
    const std::optional<Parameters> parameters = parse(link);
    const std::optional<std::string> report =
        configuration_->getClientInfoJSONWithSkipSearch(!searchForBreltoOrvanta_);
    if (parameters && report) {
      sendRequest(parameters->at(std::string(kPortalUri)), parameters->at(std::string(kSessionId)),
                  report);
    }
  } catch (const PlatformException& exception) {
    logger_->log("[%@] Caught exception %@ - %@%s", kClassName, exception.name(),
                 exception.reason(), "");
  }
}

PropertyList::Dictionary ZQN5VendrilAppDelegate::processDetails() const {
  const Bundle& bundle = Host::current().bundle();
  const ProcessInfo& process = Host::current().processInfo();
  const auto name = bundle.infoString("CFBundleName");
  const auto identifier = bundle.infoString("CFBundleIdentifier");
  const auto version = bundle.infoString("CFBundleVersion");
  std::string arguments = fmt::format("{}", fmt::join(process.arguments(), " "));
  const auto startText = startTime_
                             ? std::optional(logger_->dateFormatter().stringFromDate(*startTime_))
                             : std::nullopt;
  const Date now = process.currentDate();
  const std::int64_t uptime = wholeSecondsBetween(startTime_.value_or(now), now);
  const bool isLoginItem = launchOnLogin();
  const bool isDefaultHandler = protocolHandler().isRegisteredForAllSupportedURLSchemes();
  return {{"BundleName", required("BundleName", name)},
          {"BundleIdentifier", required("BundleIdentifier", identifier)},
          {"BundleVersion", required("BundleVersion", version)},
          {"Arguments", std::move(arguments)},
          {"StartTime", required("StartTime", startText)},
          {"Uptime", uptime},
          {"LaunchOnLogin", isLoginItem},
          {"DefaulURLHandler", isDefaultHandler}};
}

bool ZQN5VendrilAppDelegate::load() {
  if (!configuration_->loadFromFile()) {
    return false;
  }
  const std::string directory = configuration_->logDirectory();
  std::optional<std::string> path = logPath(directory, false);
  if (path && path != logger_->path()) {
    path = logPath(directory, true);
  }
  logger_->setPath(path);
  UserDefaults& defaults = Host::current().userDefaults();
  defaults.setObject(directory, "LogDirectory");
  defaults.synchronize();
  return true;
}

std::optional<ZQN5VendrilAppDelegate::Parameters> ZQN5VendrilAppDelegate::parse(
    const Url& link) const {
  const LinkParameters found = linkParametersOf(link);
  if (!found.portalUri) {
    logger_->log("[%@] Parsing failed: Parameter %@ not found in URL: %@%s", kClassName, kPortalUri,
                 link, "");
    return std::nullopt;
  }
  if (!found.sessionId) {
    logger_->log("[%@] Parsing failed: Parameter %@ not found in URL: %@%s", kClassName, kSessionId,
                 *found.portalUri, "");
    return std::nullopt;
  }
  return Parameters{{std::string(kPortalUri), *found.portalUri},
                    {std::string(kSessionId), *found.sessionId}};
}

}  // namespace vendril
