#pragma once

#include "platform/LaunchServices.h"

namespace vendril {

/// Hands every operation on to another LaunchServices, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingLaunchServices : public LaunchServices {
 public:
  explicit ForwardingLaunchServices(LaunchServices& target) : target_(target) {}

  std::int32_t setDefaultHandlerForURLScheme(std::string_view scheme,
                                             std::string_view bundleIdentifier) override {
    return target_.setDefaultHandlerForURLScheme(scheme, bundleIdentifier);
  }
  std::optional<std::string> copyDefaultHandlerForURLScheme(std::string_view scheme) override {
    return target_.copyDefaultHandlerForURLScheme(scheme);
  }
  std::shared_ptr<void> shareOneLook(const std::set<std::string>& schemes) override {
    return target_.shareOneLook(schemes);
  }
  std::optional<std::vector<std::string>> copyAllHandlersForURLScheme(
      std::string_view scheme) override {
    return target_.copyAllHandlersForURLScheme(scheme);
  }

 private:
  LaunchServices& target_;
};

}  // namespace vendril
