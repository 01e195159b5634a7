#pragma once

#include <string_view>

namespace vendril {

/// True when `text` is an XML property list within the limits, in a subset of XML that every parser
/// reads alike: UTF-8, no internal document type, no entities but XML's own five, attributes on
/// `plist` alone, one root value, each key followed by its value, and numbers, dates and data
/// spelled as their types demand.
bool isSafeXmlPlist(std::string_view text);

}  // namespace vendril
