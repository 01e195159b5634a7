#include "support/PrivateBus.h"

#include <signal.h>

#include <stdexcept>

namespace vendril {
namespace {

std::string configuration(const std::filesystem::path& socket,
                          const std::filesystem::path& services) {
  return "<busconfig>\n"
         "  <type>session</type>\n"
         "  <listen>unix:path=" +
         socket.string() +
         "</listen>\n"
         "  <auth>EXTERNAL</auth>\n"
         "  <servicedir>" +
         services.string() +
         "</servicedir>\n"
         "  <policy context=\"default\">\n"
         "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
         "    <allow eavesdrop=\"true\"/>\n"
         "    <allow own=\"*\"/>\n"
         "  </policy>\n"
         "</busconfig>\n";
}

}  // namespace

PrivateBus::PrivateBus(const PrivateHome& home)
    : servicesDirectory_(home.data() / "dbus-1/services"),
      configurationFile_(home.root() / "bus.conf"),
      socket_(home.runtime() / "bus"),
      address_("unix:path=" + socket_.string()) {
  std::filesystem::create_directories(servicesDirectory_);
  writeFile(configurationFile_, configuration(socket_, servicesDirectory_));
  start();
  variable_.emplace("DBUS_SESSION_BUS_ADDRESS", address_);
}

void PrivateBus::start() {
  daemon_.emplace(std::vector<std::string>{"dbus-daemon",
                                           "--config-file=" + configurationFile_.string(),
                                           "--nofork", "--print-address=1"});
  if (!daemon_->waitForOut("\n")) {
    throw std::runtime_error("dbus-daemon does not start: " + daemon_->err());
  }
}

void PrivateBus::addService(const std::string& name, const std::string& command) const {
  writeFile(servicesDirectory_ / (name + ".service"),
            "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
}

void PrivateBus::stop() {
  daemon_->signal(SIGTERM);
  daemon_->waitForExit();
  std::filesystem::remove(socket_);
}

}  // namespace vendril
