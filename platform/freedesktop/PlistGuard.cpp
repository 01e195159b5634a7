#include "platform/freedesktop/PlistGuard.h"

#include "platform/freedesktop/PlistBinaryGuard.h"
#include "platform/freedesktop/PlistXmlGuard.h"

namespace vendril {

std::optional<PlistFormat> acceptedPlistFormat(std::string_view bytes) {
  if (bytes.size() > PlistLimits::kFileSize) {
    return std::nullopt;
  }
  if (isSafeBinaryPlist(bytes)) {
    return PlistFormat::binary;
  }
  return isSafeXmlPlist(bytes) ? std::optional(PlistFormat::xml) : std::nullopt;
}

}  // namespace vendril
