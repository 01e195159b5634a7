#pragma once

#include <optional>
#include <string>

namespace vendril {

/// Makes universally unique identifiers.
class UuidGenerator {
 public:
  virtual ~UuidGenerator() = default;

  /// A new identifier in its canonical text form, with upper-case hexadecimal digits; nothing when
  /// none could be made.
  virtual std::optional<std::string> createUuidString() = 0;
};

}  // namespace vendril
