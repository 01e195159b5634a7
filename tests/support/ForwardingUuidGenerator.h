#pragma once

#include "platform/UuidGenerator.h"

namespace vendril {

/// Hands every operation on to another UuidGenerator, which outlives this one. A test that breaks
/// one operation overrides that one.
class ForwardingUuidGenerator : public UuidGenerator {
 public:
  explicit ForwardingUuidGenerator(UuidGenerator& target) : target_(target) {}

  std::optional<std::string> createUuidString() override { return target_.createUuidString(); }

 private:
  UuidGenerator& target_;
};

}  // namespace vendril
