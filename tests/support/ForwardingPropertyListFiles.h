#pragma once

#include "platform/PropertyListFiles.h"

namespace vendril {

/// Hands every operation on to another PropertyListFiles, which outlives this one. A test that
/// breaks one operation overrides that one.
class ForwardingPropertyListFiles : public PropertyListFiles {
 public:
  explicit ForwardingPropertyListFiles(PropertyListFiles& target) : target_(target) {}

  std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const override {
    return target_.dictionaryWithContentsOfFile(path);
  }
  std::optional<PropertyList::Dictionary> dictionaryWithData(
      std::span<const unsigned char> data) const override {
    return target_.dictionaryWithData(data);
  }
  bool writeDictionary(const PropertyList::Dictionary& root,
                       const std::string& path) const override {
    return target_.writeDictionary(root, path);
  }

 private:
  PropertyListFiles& target_;
};

}  // namespace vendril
