#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ProcessInfo.h"
#include "platform/UserDirectories.h"
#include "platform/UuidGenerator.h"

namespace vendril {

/// A process whose arguments and clock are plain members.
class FakeProcessInfo : public ProcessInfo {
 public:
  std::vector<std::string> argumentList{"/opt/vendril/bin/vendril"};
  Date now = Date(std::chrono::milliseconds(1'706'706'309'042));  // 2024-01-31 13:05:09.042 UTC

  std::vector<std::string> arguments() const override { return argumentList; }
  Date currentDate() const override { return now; }
};

/// Library directories as given; none at first.
class FakeUserDirectories : public UserDirectories {
 public:
  std::vector<std::string> directories;

  std::vector<std::string> libraryDirectories() const override { return directories; }
};

/// Answers one identifier, or none.
class FakeUuidGenerator : public UuidGenerator {
 public:
  std::optional<std::string> next = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";

  std::optional<std::string> createUuidString() override { return next; }
};

}  // namespace vendril
