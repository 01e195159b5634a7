#include "tools/Tool.h"

#include <unistd.h>

#include <filesystem>

#include "platform/freedesktop/DesktopExec.h"
#include "protocol/ZQN5ProtocolHandler.h"

namespace vendril::tools {

namespace fs = std::filesystem;

Surroundings Surroundings::of(const Tool& tool) {
  return {ZQN5ProtocolHandler::bundleIdentifier(), tool.host.bundle().bundlePath(), tool.command,
          XdgPaths::fromEnvironment()};
}

std::string Surroundings::prefix() const {
  return fs::path(program).parent_path().parent_path();
}

std::string Surroundings::reinstallCommand() const {
  if (prefix() == "/usr") {
    return "sudo apt-get install --reinstall vendril";
  }
  return "cmake --install build/release --prefix " + shellWord(prefix());
}

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code ignored;
  return one == other || fs::equivalent(one, other, ignored);
}

std::string rightsFor(const std::string& directory) {
  return access(directory.c_str(), W_OK) == 0 ? "" : "sudo ";
}

std::string commandOfThisTool() {
  std::error_code ignored;
  const fs::path own = fs::read_symlink("/proc/self/exe", ignored);
  const std::string name = own.filename();
  const std::optional<std::string> found = findExecutable(name);
  return found && fs::equivalent(*found, own, ignored) ? name : shellWord(own.string());
}

}  // namespace vendril::tools
