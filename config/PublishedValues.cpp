#include "config/PublishedValues.h"

#include <algorithm>
#include <type_traits>

namespace vendril {
namespace {

void skipLeading(std::string_view& text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

bool saysYes(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
  constexpr std::string_view kYes = "YyTt123456789";
  skipLeading(text, kWhiteSpace);
  if (text.starts_with('+') || text.starts_with('-')) {
    text.remove_prefix(1);
  }
  skipLeading(text, "0");
  return !text.empty() && kYes.find(text.front()) != std::string_view::npos;
}

}  // namespace

std::optional<PropertyList> valueForKey(const PropertyList::Dictionary& dictionary,
                                        std::string_view key) {
  const auto entry = dictionary.find(key);
  return entry != dictionary.end() ? std::optional(entry->second) : std::nullopt;
}

bool booleanForKey(const PropertyList::Dictionary& dictionary, std::string_view key) {
  const auto entry = dictionary.find(key);
  if (entry == dictionary.end()) {
    return false;
  }
  return entry->second.visit([](const auto& value) {
    using Value = std::decay_t<decltype(value)>;
    if constexpr (std::is_arithmetic_v<Value>) {
      return value != Value{};
    } else if constexpr (std::is_same_v<Value, std::string>) {
      return saysYes(value);
    } else {
      return false;
    }
  });
}

}  // namespace vendril
