#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril::fuzz {

/// What GKeyFile makes of a text, translations included; null when it does not parse.
GKeyFilePtr parseKeyFile(std::string_view text);

/// Requires that `after` parses and says what `before`, which parses, says under every key of every
/// group but those that may change.
void requireSameValues(
    std::string_view before, std::string_view after,
    const std::function<bool(std::string_view group, std::string_view key)>& mayChange);

}  // namespace vendril::fuzz
