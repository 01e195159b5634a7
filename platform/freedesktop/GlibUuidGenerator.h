#pragma once

#include <optional>
#include <string>

#include "platform/UuidGenerator.h"

namespace vendril {

/// Makes random identifiers (version 4 of RFC 4122). Any thread.
class GlibUuidGenerator : public UuidGenerator {
 public:
  std::optional<std::string> createUuidString() override;
};

}  // namespace vendril
