#include "platform/freedesktop/GlibUuidGenerator.h"

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

std::optional<std::string> GlibUuidGenerator::createUuidString() {
  const GCharPtr lower(g_uuid_string_random());
  const GCharPtr upper(g_ascii_strup(lower.get(), -1));
  return std::string(upper.get());
}

}  // namespace vendril
