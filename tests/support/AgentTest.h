#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/BusClient.h"
#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateHome.h"
#include "support/ScopedVariable.h"

namespace vendril {

/// A private home and bus for the test agent, and what its processes have recorded there, all in
/// one list.
class AgentTest : public testing::Test {
 protected:
  static constexpr const char* kName = "com.example.testagent";
  static constexpr const char* kPath = "/com/example/testagent";
  static constexpr const char* kProgram = VENDRIL_BUILD_DIR "/tests/test_agent";

  using Lines = std::vector<std::string>;
  using Process = std::unique_ptr<ChildProcess>;

  AgentTest();

  /// Starts a process of the agent.
  static Process start(const Lines& arguments = {}, const ChildProcess::Environment& changes = {});

  /// Starts the first process of the session and waits until it has been launched.
  Process startFirst(const Lines& arguments = {});

  /// Ends a process by SIGTERM; its exit status.
  static std::optional<int> quit(ChildProcess& process);

  /// What the agent has recorded, and the links among that which it has handled.
  Lines record() const;
  Lines handledLinks() const;
  [[nodiscard]] bool waitForRecord(const std::string& line) const;

  /// Forgets what has been recorded.
  void clearRecord() const;

  PrivateHome home_;
  ScopedVariable recordVariable_;
  PrivateBus bus_;
  BusClient client_;
};

}  // namespace vendril
