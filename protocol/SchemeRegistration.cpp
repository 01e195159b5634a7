#include <algorithm>
#include <cstdint>

#include "platform/AsciiCase.h"
#include "platform/Host.h"
#include "platform/LaunchServices.h"
#include "protocol/ZQN5ProtocolHandler.h"

namespace vendril {
namespace {

constexpr const char* kClassName = "ZQN5ProtocolHandler";
constexpr std::string_view kUrlTypesKey = "CFBundleURLTypes";
constexpr std::string_view kUrlSchemesKey = "CFBundleURLSchemes";

LaunchServices& launchServices() {
  return Host::current().launchServices();
}

/// The schemes of one entry of the URL types; null when it has none.
const PropertyList::Array* schemesOfUrlType(const PropertyList& urlType) {
  const auto* entries = urlType.get<PropertyList::Dictionary>();
  if (entries == nullptr) {
    return nullptr;
  }
  const auto schemes = entries->find(kUrlSchemesKey);
  return schemes != entries->end() ? schemes->second.get<PropertyList::Array>() : nullptr;
}

void addStrings(const PropertyList::Array& values, std::set<std::string>& strings) {
  for (const PropertyList& value : values) {
    if (const auto* string = value.get<std::string>()) {
      strings.insert(*string);
    }
  }
}

}  // namespace

ZQN5ProtocolHandler::Schemes ZQN5ProtocolHandler::supportedURLSchemes(const Bundle& bundle) {
  Schemes schemes;
  const std::optional<PropertyList> value = bundle.objectForInfoDictionaryKey(kUrlTypesKey);
  const auto* urlTypes = value ? value->get<PropertyList::Array>() : nullptr;
  if (urlTypes == nullptr) {
    return schemes;
  }
  for (const PropertyList& urlType : *urlTypes) {
    if (const auto* declared = schemesOfUrlType(urlType)) {
      addStrings(*declared, schemes);
    }
  }
  return schemes;
}

bool ZQN5ProtocolHandler::isValidScheme(const std::string& scheme) const {
  if (!scheme.empty() && supportedURLSchemes_.contains(scheme)) {
    return true;
  }
  logTo(loggerBlock_, "Invalid '%@' scheme has been found", scheme);
  return false;
}

std::string ZQN5ProtocolHandler::bundleIdentifier() {
  return Host::current().bundle().lowercaseIdentifier();
}

bool ZQN5ProtocolHandler::registerForURLScheme(const std::string& scheme) const {
  logTo(loggerBlock_, "Registering for '%@' scheme", scheme);
  if (!isValidScheme(scheme)) {
    logTo(loggerBlock_, "Failed to register for '%@' scheme. Invalid scheme", scheme);
    return false;
  }
  const std::int32_t status =
      launchServices().setDefaultHandlerForURLScheme(scheme, bundleIdentifier());
  if (status != LaunchServices::kSuccess) {
    logTo(loggerBlock_, "Failed to register for '%@' scheme. Status=%ull", scheme,
          static_cast<std::uint32_t>(status));
    return false;
  }
  logTo(loggerBlock_, "Successfully registered for '%@' scheme", scheme);
  return true;
}

bool ZQN5ProtocolHandler::unregisterFromURLScheme(const std::string& scheme) const {
  logTo(loggerBlock_, "Unregistering from '%@' scheme %@", kClassName, scheme);
  if (!isValidScheme(scheme)) {
    logTo(loggerBlock_, "Failed to unregister from '%@' scheme. Invalid scheme", scheme);
    return false;
  }
  if (!isRegisteredForURLScheme(scheme)) {
    logTo(loggerBlock_, "Application is not registered for '%@' scheme", scheme);
    return true;
  }
  const auto handlers = launchServices().copyAllHandlersForURLScheme(scheme);
  if (!handlers || !registerOneOfOthers(scheme, *handlers)) {
    logTo(loggerBlock_, "Failed to unregister from '%@' scheme", scheme);
    return false;
  }
  logTo(loggerBlock_, "Successfully unregistered from '%@' scheme", scheme);
  return true;
}

bool ZQN5ProtocolHandler::registerOneOfOthers(const std::string& scheme,
                                              const std::vector<std::string>& handlers) const {
  // Unlike `isRegisteredForURLScheme`, the walk minds the case of our own identifier.
  return std::any_of(handlers.rbegin(), handlers.rend(),
                     [&, ownIdentifier = bundleIdentifier()](const std::string& handler) {
                       return handler != ownIdentifier && registerOther(scheme, handler);
                     });
}

bool ZQN5ProtocolHandler::registerOther(const std::string& scheme,
                                        const std::string& handler) const {
  if (launchServices().setDefaultHandlerForURLScheme(scheme, handler) != LaunchServices::kSuccess) {
    logTo(loggerBlock_, "Failed to register '%@' as new default handler for '%@' scheme", handler,
          scheme);
    return false;
  }
  logTo(loggerBlock_, "Successfully registered '%@' as new default handler for '%@' scheme",
        handler, scheme);
  return true;
}

bool ZQN5ProtocolHandler::isRegisteredForURLScheme(const std::string& scheme) const {
  if (!isValidScheme(scheme)) {
    return false;
  }
  const auto handler = launchServices().copyDefaultHandlerForURLScheme(scheme);
  return handler && asciiLowercase(*handler) == bundleIdentifier();
}

bool ZQN5ProtocolHandler::registerForURLSchemes(const Schemes& schemes) const {
  return std::all_of(schemes.begin(), schemes.end(),
                     [this](const std::string& scheme) { return registerForURLScheme(scheme); });
}

bool ZQN5ProtocolHandler::unregisterFromURLSchemes(const Schemes& schemes) const {
  return std::all_of(schemes.begin(), schemes.end(),
                     [this](const std::string& scheme) { return unregisterFromURLScheme(scheme); });
}

bool ZQN5ProtocolHandler::isRegisteredForURLSchemes(const Schemes& schemes) const {
  const auto look = launchServices().shareOneLook(schemes);
  return std::all_of(schemes.begin(), schemes.end(), [this](const std::string& scheme) {
    return isRegisteredForURLScheme(scheme);
  });
}

bool ZQN5ProtocolHandler::registerForAllSupportedURLSchemes() const {
  return registerForURLSchemes(supportedURLSchemes_);
}

bool ZQN5ProtocolHandler::unregisterFromAllSupportedURLSchemes() const {
  return unregisterFromURLSchemes(supportedURLSchemes_);
}

bool ZQN5ProtocolHandler::isRegisteredForAllSupportedURLSchemes() const {
  return isRegisteredForURLSchemes(supportedURLSchemes_);
}

}  // namespace vendril
