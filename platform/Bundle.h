#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/PropertyList.h"

namespace vendril {

/// The application's own bundle: where it lies, what its information file says, its localized
/// texts. Main thread only.
class Bundle {
 public:
  virtual ~Bundle() = default;

  /// The absolute path of the bundle.
  virtual std::string bundlePath() const = 0;

  /// The bundle's identifier as the information file spells it; nothing when it names none.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  /// The same in lower case, as the desktop and its registries know the application; empty when the
  /// information file names none.
  std::string lowercaseIdentifier() const;

  /// The value of one entry of the information file; nothing when there is none.
  virtual std::optional<PropertyList> objectForInfoDictionaryKey(std::string_view key) const = 0;

  /// The text that the string table `table` holds under `key` in the user's language, or `value`
  /// when there is no such table or key. Looked up anew on each call.
  virtual std::string localizedString(std::string_view key, std::string_view value,
                                      std::string_view table) const = 0;

  /// An entry of the information file that is a text; nothing when it is missing or of another
  /// kind.
  std::optional<std::string> infoString(std::string_view key) const;
};

}  // namespace vendril
