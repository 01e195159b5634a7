#pragma once

#include <optional>

#include "platform/PropertyList.h"
#include "platform/freedesktop/PlistPtr.h"

namespace vendril {

/// The dictionary that a libplist node holds; nothing when it is of another kind, or holds a node
/// of a kind that property lists do not know. The last of several entries of one key counts. Goes
/// as deep as the node nests.
std::optional<PropertyList::Dictionary> dictionaryFromPlist(plist_t node);

/// The same as a libplist node; null when a text in it is not UTF-8 or has characters that XML
/// cannot hold.
PlistPtr plistFromDictionary(const PropertyList::Dictionary& dictionary);

}  // namespace vendril
