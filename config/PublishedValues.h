#pragma once

#include <optional>
#include <string_view>

#include "platform/PropertyList.h"

namespace vendril {

/// The value under `key`, whatever its kind; nothing when there is none. Case counts.
std::optional<PropertyList> valueForKey(const PropertyList::Dictionary& dictionary,
                                        std::string_view key);

/// The value under `key` as a flag. True for a number other than zero, and for a text that begins,
/// behind white space, one sign and any zeros, with Y, y, T, t or a digit from 1 to 9. False for
/// everything else and when there is no value.
bool booleanForKey(const PropertyList::Dictionary& dictionary, std::string_view key);

}  // namespace vendril
