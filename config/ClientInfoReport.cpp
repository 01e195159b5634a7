#include "config/ClientInfoReport.h"

#include "config/ZQN5PublishedConfiguration.h"
#include "platform/FileSystem.h"
#include "platform/Utf8.h"

namespace vendril {
namespace {

PropertyList::Dictionary asDictionary(const JsonMembers& members) {
  return {members.begin(), members.end()};
}

}  // namespace

std::optional<std::string> serializeClientInfo(const JsonMembers& members,
                                               const LoggerBlock& loggerBlock,
                                               const JsonWriter& writer) {
  if (!isValidJsonObject(members)) {
    logTo(loggerBlock, "Serialization to JSON failed with error: Object is invalid. Data:\n%@\n",
          asDictionary(members));
    return std::nullopt;
  }
  JsonResult json = writer(members);
  if (!json.bytes) {
    logTo(loggerBlock, "Serialization to JSON failed with error: %@. Data:\n%@\n", json.error,
          asDictionary(members));
    return std::nullopt;
  }
  if (!isValidUtf8(*json.bytes)) {
    logTo(loggerBlock, "Serialization to JSON failed with error: Cannot create JSON string");
    return std::nullopt;
  }
  return std::move(json.bytes);
}

std::optional<std::string> ZQN5PublishedConfiguration::getClientInfoJSONWithSkipSearch(
    bool skipSearch) {
  if (!loadFromFile()) {
    logTo(loggerBlock_, "Cannot get latest client info.");
    return std::nullopt;
  }
  return clientInfoJSON(skipSearch);
}

std::optional<std::string> ZQN5PublishedConfiguration::clientInfoJSON(bool skipSearch) const {
  // Name and version go out in the kind in which they were found; JSON may have no form for it.
  const PropertyList empty = "";
  constexpr std::size_t kMembers = 7;
  JsonMembers members;
  members.reserve(kMembers);
  members.emplace_back("appName", appName_ ? *appName_ : empty);
  members.emplace_back("appVersion", appVersion_ ? *appVersion_ : empty);
  members.emplace_back("isMeetMeOnly", isMeetMeOnly());
  const bool found = skipSearch || findBreltoOrvanta();
  const auto capability = [found](bool capable) { return capable && found ? 1 : 0; };
  members.emplace_back("meetmeCapable", capability(meetmeCapable()));
  members.emplace_back("videoCapable", capability(videoCapable()));
  // Spelled with a small r, unlike the key in the file.
  members.emplace_back("SIPready", capability(SIPReady()));
  if (!SIPDomain().empty() && SIPReady() && found) {
    members.emplace_back("SIPDomain", SIPDomain());
  }
  return serializeClientInfo(members, loggerBlock_);
}

bool ZQN5PublishedConfiguration::findBreltoOrvanta() const {
  const std::string path = executablePath();
  if (path.empty()) {
    logTo(loggerBlock_, "[%@] Failed to find Brelto Orvanta executable: Path is empty", kClassName);
    return false;
  }
  if (fileKindAt(path) == FileKind::other) {
    return true;
  }
  logTo(loggerBlock_, "Failed to find Brelto Orvanta executable: '%@'", path);
  return false;
}

}  // namespace vendril
