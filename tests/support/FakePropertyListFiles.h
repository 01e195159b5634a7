#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/PropertyListFiles.h"

namespace vendril {

/// Files in memory, already parsed. The only data that it can parse is what `parsedData` answers.
class FakePropertyListFiles : public PropertyListFiles {
 public:
  mutable std::map<std::string, PropertyList::Dictionary> files;
  /// What any data parses as; nothing stands for data that does not parse.
  std::optional<PropertyList::Dictionary> parsedData =
      PropertyList::Dictionary{{"AppName", "Brelto Orvanta 3.21.0"},
                               {"AppVersion", "3.21.0.64.24"},
                               {"isMeetMeOnly", true},
                               {"SIPReady", false},
                               {"isTemporary", false},
                               {"videoCapable", true},
                               {"meetmeCapable", true}};
  bool failsToWrite = false;
  /// What was asked, in order: "read PATH", "parse", "write PATH".
  mutable std::vector<std::string> history;

  std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const override {
    history.push_back("read " + path);
    const auto entry = files.find(path);
    return entry != files.end() ? std::optional(entry->second) : std::nullopt;
  }

  std::optional<PropertyList::Dictionary> dictionaryWithData(
      std::span<const unsigned char> /*data*/) const override {
    history.emplace_back("parse");
    return parsedData;
  }

  bool writeDictionary(const PropertyList::Dictionary& root,
                       const std::string& path) const override {
    history.push_back("write " + path);
    if (!failsToWrite) {
      files.insert_or_assign(path, root);
    }
    return !failsToWrite;
  }
};

}  // namespace vendril
