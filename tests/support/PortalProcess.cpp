#include "support/PortalProcess.h"

#include <stdexcept>

namespace vendril {
namespace {

constexpr const char* kAddress = "http://127.0.0.1:";

std::vector<std::string> commandOf(const std::string& program,
                                   const std::vector<std::string>& arguments) {
  std::vector<std::string> command{program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

PortalProcess::PortalProcess(const std::string& program, const std::vector<std::string>& arguments)
    : process_(commandOf(program, arguments)) {
  if (!process_.waitForOut("\n\n")) {
    throw std::runtime_error("the portal does not start: " + process_.err());
  }
  const std::string& out = process_.out();
  port_ = std::stoi(out.substr(out.find(kAddress) + std::string(kAddress).size()));
}

std::string PortalProcess::url(const std::string& path) const {
  return kAddress + std::to_string(port_) + path;
}

}  // namespace vendril
