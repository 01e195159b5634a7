#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vendril {

/// The user's registry of URL scheme handlers. Handlers are named by bundle identifier. All calls
/// are synchronous; main thread only.
class LaunchServices {
 public:
  /// Status codes of `setDefaultHandlerForURLScheme`, as Launch Services numbers them.
  static constexpr std::int32_t kSuccess = 0;
  static constexpr std::int32_t kUnknownError = -10810;
  static constexpr std::int32_t kApplicationNotFound = -10814;

  virtual ~LaunchServices() = default;

  /// Makes the application `bundleIdentifier` the default handler of `scheme`.
  virtual std::int32_t setDefaultHandlerForURLScheme(std::string_view scheme,
                                                     std::string_view bundleIdentifier) = 0;

  /// The default handler of `scheme`; nothing when there is none.
  virtual std::optional<std::string> copyDefaultHandlerForURLScheme(std::string_view scheme) = 0;

  /// While the result lives, the default handlers of `schemes` may all be taken from one look at
  /// the registry. For questions that belong together.
  virtual std::shared_ptr<void> shareOneLook(const std::set<std::string>& schemes) = 0;

  /// Every application that can handle `scheme`; nothing when the registry cannot tell.
  virtual std::optional<std::vector<std::string>> copyAllHandlersForURLScheme(
      std::string_view scheme) = 0;
};

}  // namespace vendril
