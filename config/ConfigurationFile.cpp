#include <span>
#include <utility>

#include "config/PublishedValues.h"
#include "config/ZQN5DefaultPublishedConfiguration.h"
#include "config/ZQN5PublishedConfiguration.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/Host.h"
#include "platform/PropertyListFiles.h"
#include "platform/UserDirectories.h"

namespace vendril {
namespace {

constexpr const char* kPreferencesFolder = "Preferences";
/// Named after the application group that the conferencing client shares with its companions.
constexpr const char* kFileName = "group.com.brelto.orvanta.plist";
constexpr const char* kRootKey = "PublishedConfiguration";

/// The configuration in the file at `path`; nothing when there is none or when it is not a
/// dictionary.
std::optional<PropertyList::Dictionary> publishedDictionary(
    const std::optional<std::string>& path) {
  auto root =
      path ? Host::current().propertyListFiles().dictionaryWithContentsOfFile(*path) : std::nullopt;
  if (!root) {
    return std::nullopt;
  }
  const auto value = root->find(kRootKey);
  auto* dictionary = value != root->end() ? value->second.get<PropertyList::Dictionary>() : nullptr;
  return dictionary != nullptr ? std::optional(std::move(*dictionary)) : std::nullopt;
}

/// The folder that the file lies in; nothing when there is no Library directory.
std::optional<std::string> preferencesFolder() {
  const auto libraries = Host::current().userDirectories().libraryDirectories();
  return libraries.empty()
             ? std::nullopt
             : std::optional(appendPathComponent(libraries.front(), kPreferencesFolder));
}

std::optional<PropertyList::Dictionary> defaultDictionary() {
  return Host::current().propertyListFiles().dictionaryWithData(
      std::span(static_cast<const unsigned char*>(ZQN5DefaultPublishedConfiguration_plist),
                ZQN5DefaultPublishedConfiguration_plist_len));
}

/// True when `folder` is there, or was missing and could be created.
bool ensureFolder(const std::string& folder, const LoggerBlock& loggerBlock) {
  switch (fileKindAt(folder)) {
    case FileKind::folder:
      return true;
    case FileKind::other:
      logTo(loggerBlock,
            "Failed to create persistent storage: "
            "Expected a folder to store application logs, found a file");
      return false;
    case FileKind::missing:
      break;
  }
  const std::error_code error = createFolder(folder);
  if (error) {
    logTo(loggerBlock, "Failed to create persistent storage: %@", error.message());
  }
  return !error;
}

}  // namespace

std::optional<std::string> ZQN5PublishedConfiguration::persistentFilePath() const {
  const std::optional<std::string> folder = preferencesFolder();
  if (!folder) {
    logTo(loggerBlock_,
          "Failed to create persistent storage: Cannot find user preferences directory.");
    return std::nullopt;
  }
  if (!ensureFolder(*folder, loggerBlock_)) {
    return std::nullopt;
  }
  return appendPathComponent(*folder, kFileName);
}

std::optional<std::string> ZQN5PublishedConfiguration::expectedFilePath() {
  const std::optional<std::string> folder = preferencesFolder();
  return folder ? std::optional(appendPathComponent(*folder, kFileName)) : std::nullopt;
}

bool ZQN5PublishedConfiguration::holdsConfiguration(const std::string& path) {
  return publishedDictionary(path).has_value();
}

bool ZQN5PublishedConfiguration::loadFromFile() {
  return loadFrom(persistentFilePath());
}

bool ZQN5PublishedConfiguration::loadWithoutTrace() {
  return loadFrom(expectedFilePath());
}

bool ZQN5PublishedConfiguration::loadFrom(const std::optional<std::string>& path) {
  auto found = publishedDictionary(path);
  if (!found) {
    logTo(loggerBlock_, "Failed to load configuration from persistent storage: '%@'", path);
    logTo(loggerBlock_, "Switching to default configuration");
    found = defaultDictionary();
  }
  if (!found) {
    logTo(loggerBlock_, "Failed to load default configuration");
    return false;
  }
  assignFrom(*found);
  logTo(loggerBlock_, "Configuration has been successfully loaded:\n%@\n", *found);
  return true;
}

bool ZQN5PublishedConfiguration::saveToFile() const {
  const PropertyList::Dictionary saved = dictionary();
  const std::optional<std::string> path = persistentFilePath();
  const bool written =
      path && Host::current().propertyListFiles().writeDictionary({{kRootKey, saved}}, *path);
  if (written) {
    logTo(loggerBlock_,
          "Configuration has been successfully saved to persistent storage: '%@'\n%@\n", path,
          saved);
  } else {
    logTo(loggerBlock_, "Failed to save configuration to persistent storage: '%@'", path);
  }
  return written;
}

bool ZQN5PublishedConfiguration::removeFile() const {
  const std::optional<std::string> path = persistentFilePath();
  if (!path || fileKindAt(*path) == FileKind::missing) {
    return true;
  }
  const std::error_code error = removeFileAt(*path);
  if (error) {
    logTo(loggerBlock_, "Failed to remove configuration persistent storage: '%@' error: %@", path,
          error.message());
  }
  return !error;
}

void ZQN5PublishedConfiguration::updateVersionIfNeeded() {
  loadFromFile();
  const Bundle& bundle = Host::current().bundle();
  const std::optional<std::string> version = bundle.infoString("CFBundleVersion");
  if (version == appVersion()) {
    return;
  }
  logTo(loggerBlock_,
        "App bundleVersion inconsistent with configutaion! Updating configuration file.");
  setAppName(formatMessage("%@ %@", bundle.infoString("CFBundleName"),
                           bundle.infoString("CFBundleShortVersionString")));
  setAppVersion(version);
  saveToFile();
}

}  // namespace vendril
