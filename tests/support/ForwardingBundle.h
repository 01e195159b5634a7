#pragma once

#include "platform/Bundle.h"

namespace vendril {

/// Hands every operation on to another Bundle, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingBundle : public Bundle {
 public:
  explicit ForwardingBundle(Bundle& target) : target_(target) {}

  std::string bundlePath() const override { return target_.bundlePath(); }
  std::optional<std::string> bundleIdentifier() const override {
    return target_.bundleIdentifier();
  }
  std::optional<PropertyList> objectForInfoDictionaryKey(std::string_view key) const override {
    return target_.objectForInfoDictionaryKey(key);
  }
  std::string localizedString(std::string_view key, std::string_view value,
                              std::string_view table) const override {
    return target_.localizedString(key, value, table);
  }

 private:
  Bundle& target_;
};

}  // namespace vendril
