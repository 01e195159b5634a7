#pragma once

#include <plist/plist.h>

#include <memory>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// Owners of what libplist hands out. A node owns the nodes inside it.
using PlistPtr = std::unique_ptr<void, ReleaseWith<plist_free>>;
using PlistTextPtr = std::unique_ptr<char, ReleaseWith<plist_to_xml_free>>;
using PlistBinaryPtr = std::unique_ptr<char, ReleaseWith<plist_to_bin_free>>;

}  // namespace vendril
