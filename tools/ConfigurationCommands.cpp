#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "config/ZQN5PublishedConfiguration.h"
#include "tools/Commands.h"
#include "tools/checks/ConfigurationCheck.h"

namespace vendril::tools {
namespace {

constexpr std::array<std::string_view, 5> kTexts{"AppName", "AppVersion", "SIPDomain",
                                                 "LogDirectory", "ExecutablePath"};
constexpr std::array<std::string_view, 5> kFlags{"VideoCapable", "MeetmeCapable", "SIPReady",
                                                 "isMeetMeOnly", "isTemporary"};

template <class Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

PropertyList flag(const std::string& change, std::string_view value) {
  if (value != "true" && value != "false") {
    throw std::invalid_argument("'" + change + "': a flag is true or false");
  }
  return value == "true";
}

/// Makes one change "KEY=VALUE" to the record. An empty text takes its entry away.
void apply(const std::string& change, PropertyList::Dictionary& record) {
  const std::size_t equals = change.find('=');
  const std::string key = change.substr(0, equals);
  const bool isText = contains(kTexts, key);
  if (equals == std::string::npos || (!isText && !contains(kFlags, key))) {
    throw std::invalid_argument("'" + change + "' is not KEY=VALUE with a key of the record");
  }
  const std::string value = change.substr(equals + 1);
  if (isText && value.empty()) {
    record.erase(key);
  } else {
    record.insert_or_assign(key, isText ? PropertyList(value) : flag(change, value));
  }
}

std::string valueText(const PropertyList& value) {
  if (const bool* on = value.get<bool>()) {
    return *on ? "true" : "false";
  }
  const auto* text = value.get<std::string>();
  return text != nullptr ? *text : description(value);
}

/// What a command that changes the file answers.
Answer changed(const Tool& tool, const char* command, bool succeeded, const std::string& done) {
  const std::string path = ZQN5PublishedConfiguration::expectedFilePath().value_or("");
  return {{{"command", command}, {"verdict", succeeded ? "done" : "failed"}, {"path", path}},
          succeeded ? done + " " + printable(path) + "\n"
                    : "the published configuration could not be changed\n",
          succeeded ? kDone : kFailed,
          tool.transcript.messages()};
}

}  // namespace

Answer showConfiguration(const Tool& tool) {
  const ConfigurationFacts facts = configurationFacts(tool);
  const Check file = configurationCheck(facts);
  const Check client = clientCheck(facts);
  Fields fields;
  fields.add("file", facts.path);
  fields.add("verdict", file.verdict);
  for (const auto& [key, value] : facts.record) {
    fields.add(key, valueText(value));
  }
  fields.add("client", client.verdict);
  return {{{"command", "config show"},
           {"verdict", file.verdict},
           {"path", facts.path},
           {"source", facts.file == ConfigurationFacts::File::published ? "file" : "default"},
           {"record", facts.record},
           {"client", client.verdict}},
          fields.text(),
          file.level == Level::error ? kFailed : kDone,
          tool.transcript.messages()};
}

Answer saveConfiguration(const Tool& tool, const std::vector<std::string>& changes) {
  ZQN5PublishedConfiguration configuration(tool.transcript.loggerBlock());
  configuration.loadWithoutTrace();
  PropertyList::Dictionary record = configuration.dictionary();
  for (const std::string& change : changes) {
    apply(change, record);
  }
  configuration.assignFrom(record);
  return changed(tool, "config save", configuration.saveToFile(), "saved");
}

Answer removeConfiguration(const Tool& tool) {
  const ZQN5PublishedConfiguration configuration(tool.transcript.loggerBlock());
  return changed(tool, "config remove", configuration.removeFile(), "there is no file any more at");
}

Answer updateConfigurationVersion(const Tool& tool) {
  ZQN5PublishedConfiguration configuration(tool.transcript.loggerBlock());
  configuration.updateVersionIfNeeded();
  // The class does not say whether it could save; the file does.
  ZQN5PublishedConfiguration saved({});
  saved.loadWithoutTrace();
  const bool succeeded =
      saved.appVersion() == tool.host.bundle().infoString("CFBundleVersion").value_or("");
  return changed(tool, "config update-version", succeeded,
                 "the agent's version " + printable(saved.appVersion()) + " stands in");
}

}  // namespace vendril::tools
