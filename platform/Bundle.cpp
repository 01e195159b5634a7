#include "platform/Bundle.h"

#include "platform/AsciiCase.h"

namespace vendril {

std::string Bundle::lowercaseIdentifier() const {
  return asciiLowercase(bundleIdentifier().value_or(""));
}

std::optional<std::string> Bundle::infoString(std::string_view key) const {
  const std::optional<PropertyList> value = objectForInfoDictionaryKey(key);
  const std::string* text = value ? value->get<std::string>() : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

}  // namespace vendril
