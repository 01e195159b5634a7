#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Bundle.h"

namespace vendril {

/// A bundle whose information file and string tables are plain members.
class FakeBundle : public Bundle {
 public:
  std::string path = "/opt/vendril/bin/vendril";
  std::optional<std::string> identifier = "com.brelto.Vendril";
  PropertyList::Dictionary info{
      {"CFBundleName", "Vendril"},
      {"CFBundleIdentifier", "com.brelto.Vendril"},
      {"CFBundleShortVersionString", "1.0.0"},
      {"CFBundleVersion", "1.0.0.1"},
      {"CFBundleURLTypes", PropertyList::Array{urlType({"vendril"}), urlType({"mervale"})}}};
  /// Localized texts by table and key.
  std::map<std::pair<std::string, std::string>, std::string> strings;

  /// An entry of "CFBundleURLTypes" that declares `schemes`.
  static PropertyList urlType(const std::vector<std::string>& schemes) {
    return PropertyList::Dictionary{
        {"CFBundleURLSchemes", PropertyList::Array(schemes.begin(), schemes.end())}};
  }

  std::string bundlePath() const override { return path; }
  std::optional<std::string> bundleIdentifier() const override { return identifier; }
  std::optional<PropertyList> objectForInfoDictionaryKey(std::string_view key) const override {
    const auto entry = info.find(key);
    return entry != info.end() ? std::optional(entry->second) : std::nullopt;
  }
  std::string localizedString(std::string_view key, std::string_view value,
                              std::string_view table) const override {
    const auto entry = strings.find({std::string(table), std::string(key)});
    return entry != strings.end() ? entry->second : std::string(value);
  }
};

}  // namespace vendril
