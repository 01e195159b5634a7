#include <fmt/ranges.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/PlatformException.h"
#include "platform/ProcessInfo.h"
#include "platform/UserDefaults.h"

namespace vendril {
namespace {

constexpr std::string_view kPortalUri = "portalURI";
constexpr std::string_view kSessionId = "session_id";

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

/// The pieces of `text` between the separators, empty ones included.
std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> pieces;
  while (true) {
    const std::size_t end = text.find_first_of(separators);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(end + 1);
  }
}

/// How many bytes the first character of a UTF-8 text takes; 0 for an empty text.
std::size_t firstCharacterLength(std::string_view text) {
  constexpr auto isContinuation = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
  };
  std::size_t length = text.empty() ? 0 : 1;
  while (length < text.size() && isContinuation(text[length])) {
    ++length;
  }
  return length;
}

/// What follows the first "portalURI" and one further character, to the end of the link; nothing
/// when that is empty.
std::optional<std::string> portalUriIn(const std::string& decodedLink) {
  const std::size_t name = decodedLink.find(kPortalUri);
  if (name == std::string::npos) {
    return std::nullopt;
  }
  std::string_view value = std::string_view(decodedLink).substr(name + kPortalUri.size());
  value.remove_prefix(firstCharacterLength(value));
  return value.empty() ? std::nullopt : std::optional(std::string(value));
}

/// The first well-formed "session_id" among the parameters of a portal URL.
std::optional<std::string> sessionIdIn(std::string_view portalUri) {
  const std::vector<std::string_view> pieces = split(portalUri, "?&");
  for (auto piece = pieces.begin() + 1; piece != pieces.end(); ++piece) {
    const std::vector<std::string_view> parts = split(*piece, "=");
    if (parts.size() == 2 && parts[0] == kSessionId && !parts[1].empty()) {
      return std::string(parts[1]);
    }
  }
  return std::nullopt;
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
  const std::optional<std::string> decodedLink = removePercentEncoding(link.absoluteString());
  const std::optional<std::string> portalUri =
      decodedLink ? portalUriIn(*decodedLink) : std::nullopt;
  if (!portalUri) {
    logger_->log("[%@] Parsing failed: Parameter %@ not found in URL: %@%s", kClassName, kPortalUri,
                 link, "");
    return std::nullopt;
  }
  const std::optional<std::string> sessionId = sessionIdIn(*portalUri);
  if (!sessionId) {
    logger_->log("[%@] Parsing failed: Parameter %@ not found in URL: %@%s", kClassName, kSessionId,
                 *portalUri, "");
    return std::nullopt;
  }
  return Parameters{{std::string(kPortalUri), *portalUri}, {std::string(kSessionId), *sessionId}};
}

}  // namespace vendril
