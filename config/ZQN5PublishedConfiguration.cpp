#include "config/ZQN5PublishedConfiguration.h"

#include "config/PublishedValues.h"

namespace vendril {

ZQN5PublishedConfiguration::ZQN5PublishedConfiguration(LoggerBlock loggerBlock)
    : loggerBlock_(std::move(loggerBlock)) {
  clear();
}

void ZQN5PublishedConfiguration::clear() {
  appName_.reset();
  appVersion_.reset();
  sipDomain_.reset();
  logDirectory_.reset();
  executablePath_.reset();
  videoCapable_ = false;
  meetmeCapable_ = false;
  sipReady_ = false;
  meetMeOnly_ = true;
  temporary_ = false;
}

std::string ZQN5PublishedConfiguration::text(const std::optional<PropertyList>& value) {
  const std::string* found = value ? value->get<std::string>() : nullptr;
  return found != nullptr ? *found : std::string();
}

void ZQN5PublishedConfiguration::assignFrom(const PropertyList::Dictionary& dictionary) {
  appName_ = valueForKey(dictionary, "AppName");
  appVersion_ = valueForKey(dictionary, "AppVersion");
  sipDomain_ = valueForKey(dictionary, "SIPDomain");
  logDirectory_ = valueForKey(dictionary, "LogDirectory");
  executablePath_ = valueForKey(dictionary, "ExecutablePath");
  videoCapable_ = booleanForKey(dictionary, "VideoCapable");
  meetmeCapable_ = booleanForKey(dictionary, "MeetmeCapable");
  sipReady_ = booleanForKey(dictionary, "SIPReady");
  meetMeOnly_ = booleanForKey(dictionary, "isMeetMeOnly");
  temporary_ = booleanForKey(dictionary, "isTemporary");
}

PropertyList::Dictionary ZQN5PublishedConfiguration::dictionary() const {
  PropertyList::Dictionary result;
  const auto addWhenSet = [&result](const char* key, const std::optional<PropertyList>& value) {
    if (value) {
      result.emplace(key, *value);
    }
  };
  addWhenSet("AppName", appName_);
  addWhenSet("AppVersion", appVersion_);
  addWhenSet("SIPDomain", sipDomain_);
  addWhenSet("LogDirectory", logDirectory_);
  addWhenSet("ExecutablePath", executablePath_);
  result.emplace("VideoCapable", videoCapable_);
  result.emplace("MeetmeCapable", meetmeCapable_);
  result.emplace("SIPReady", sipReady_);
  result.emplace("isMeetMeOnly", meetMeOnly_);
  result.emplace("isTemporary", temporary_);
  return result;
}

}  // namespace vendril
