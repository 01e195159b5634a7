#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/LoggerBlock.h"
#include "platform/SystemLog.h"

namespace vendril::tools {

/// Where the messages of the agent's classes go while the tool uses them. It keeps them; they never
/// reach the system's log, where they would pass for the agent's own. Main thread only.
class Transcript : public SystemLog {
 public:
  void write(std::string_view message) noexcept override;

  const std::vector<std::string>& messages() const { return messages_; }

  /// A block that writes here, for the classes that take one; this object outlives it.
  LoggerBlock loggerBlock();

 private:
  std::vector<std::string> messages_;
};

}  // namespace vendril::tools
