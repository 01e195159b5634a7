#include "tools/ToolHost.h"

#include <filesystem>
#include <stdexcept>

namespace vendril::tools {
namespace {

namespace fs = std::filesystem;

/// The agent's name beside the tool.
constexpr const char* kAgent = "vendril";

/// The agent's path as it would tell it itself: without symbolic links.
ExecutableBundle::Parts agentBesideTheTool() {
  ExecutableBundle::Parts parts = ExecutableBundle::Parts::ofRunningProgram();
  std::error_code ignored;
  const fs::path agent = fs::path(parts.executablePath).parent_path() / kAgent;
  const fs::path resolved = fs::canonical(agent, ignored);
  parts.executablePath = resolved.empty() ? agent : resolved;
  return parts;
}

[[noreturn]] void refuse() {
  throw std::logic_error("the tool is no application");
}

}  // namespace

// Agent and tool are made and installed together, so the information file that is embedded in the
// tool is the one that is embedded in the agent.
ToolHost::ToolHost(int argc, char** argv, SystemLog& log)
    : log_(log),
      processInfo_(argc, argv),
      bundle_(agentBesideTheTool()),
      userDefaults_(userDefaultsPath(userDirectories_, bundle_.lowercaseIdentifier()),
                    propertyListFiles_, log_),
      sessionLoginItems_(bundle_),
      urlEvents_(log_) {}

Application& ToolHost::application() {
  refuse();
}

std::shared_ptr<Alert> ToolHost::makeAlert() {
  refuse();
}

std::shared_ptr<OperationQueue> ToolHost::makeOperationQueue() {
  refuse();
}

}  // namespace vendril::tools
