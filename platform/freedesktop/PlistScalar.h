#pragma once

#include <cstdint>

#include "platform/Date.h"
#include "platform/freedesktop/PlistPtr.h"

namespace vendril {

// libplist keeps every integer and date in full, but its accessors and constructors cannot tell a
// negative integer from one over 2^63, and know dates from 1932 to 2069 alone. These functions go
// through its binary format, which can.

/// True when an integer node holds a negative number, so that its value is the two's complement.
bool isNegativePlistInteger(plist_t node);

PlistPtr makePlistInteger(std::int64_t value);
PlistPtr makePlistInteger(std::uint64_t value);

/// The date that a date node holds; a date that `Date` cannot hold becomes the nearest that it can,
/// and one that is no number becomes the reference date of the format, the start of 2001.
Date plistDate(plist_t node);

PlistPtr makePlistDate(Date date);

}  // namespace vendril
