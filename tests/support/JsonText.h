#pragma once

#include <string>

#include "platform/PropertyList.h"

namespace vendril {

/// The object that a JSON text holds; throws std::runtime_error when it holds none.
PropertyList::Dictionary parseJsonObject(const std::string& text);

/// The member `key`, which has to be a text; "no text" when it is not.
std::string textAt(const PropertyList::Dictionary& object, const std::string& key);

}  // namespace vendril
