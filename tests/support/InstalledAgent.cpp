#include "support/InstalledAgent.h"

#include <signal.h>

#include <filesystem>
#include <stdexcept>

#include "platform/PercentEncoding.h"
#include "platform/freedesktop/PlistFiles.h"

namespace vendril {
namespace {

constexpr const char* kBusName = "com.brelto.vendril";
constexpr const char* kObjectPath = "/com/brelto/vendril";
constexpr const char* kInterface = "org.freedesktop.Application";
constexpr const char* kRunning = "Started";

GObjectPtr<GDBusConnection> connect(const std::string& address) {
  GErrorSlot error;
  GObjectPtr<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, error.out()));
  if (!connection) {
    throw std::runtime_error(error.message());
  }
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  return connection;
}

}  // namespace

InstalledAgent::InstalledAgent()
    : dataDirectories_("XDG_DATA_DIRS",
                       prefix() + "/share:" + home_.systemData().string() + ":/usr/share"),
      bus_(home_),
      connection_(connect(bus_.address())) {
  bus_.addService(kBusName, program());
}

InstalledAgent::~InstalledAgent() {
  terminate();
}

std::string InstalledAgent::prefix() {
  return VENDRIL_INSTALLED;
}

std::string InstalledAgent::program() {
  return prefix() + "/bin/vendril";
}

std::string InstalledAgent::configurationPath() const {
  return home_.config() / "brelto/Preferences/group.com.brelto.orvanta.plist";
}

void InstalledAgent::publishSampleConfiguration() const {
  const std::string client = home_.root() / "orvanta";
  writeFile(client, "#!/bin/sh\n");
  const PropertyList::Dictionary record{{"AppName", "Brelto Orvanta 4.0"},
                                        {"AppVersion", "4.0.1"},
                                        {"SIPDomain", "sip.example.com"},
                                        {"LogDirectory", (home_.root() / "logs").string()},
                                        {"ExecutablePath", client},
                                        {"VideoCapable", true},
                                        {"MeetmeCapable", true},
                                        {"SIPReady", true},
                                        {"isMeetMeOnly", false}};
  std::filesystem::create_directories(std::filesystem::path(configurationPath()).parent_path());
  if (!PlistFiles().writeDictionary({{"PublishedConfiguration", record}}, configurationPath())) {
    throw std::runtime_error("cannot publish a configuration");
  }
}

std::unique_ptr<ChildProcess> InstalledAgent::start(
    const std::vector<std::string>& arguments) const {
  std::vector<std::string> command{program()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return std::make_unique<ChildProcess>(std::move(command));
}

std::unique_ptr<ChildProcess> InstalledAgent::startAndWait(
    const std::vector<std::string>& arguments) const {
  auto agent = start(arguments);
  if (!agent->waitForErr(kRunning)) {
    throw std::runtime_error("the agent does not start: " + agent->err());
  }
  return agent;
}

void InstalledAgent::openOnBus(const std::vector<std::string>& links) const {
  GVariantBuilder uris;
  g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
  for (const std::string& link : links) {
    g_variant_builder_add(&uris, "s", link.c_str());
  }
  g_dbus_connection_call(connection_.get(), kBusName, kObjectPath, kInterface, "Open",
                         g_variant_new("(asa{sv})", &uris, nullptr), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

std::optional<int> InstalledAgent::run(const std::vector<std::string>& command) {
  return ChildProcess(command).waitForExit();
}

void InstalledAgent::terminate() const {
  if (const auto owner = ownerProcess()) {
    ::kill(*owner, SIGTERM);
  }
}

std::optional<pid_t> InstalledAgent::ownerProcess() const {
  const GVariantPtr answer(g_dbus_connection_call_sync(
      connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", g_variant_new("(s)", kBusName), G_VARIANT_TYPE("(u)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (!answer) {
    return std::nullopt;
  }
  guint32 process = 0;
  g_variant_get(answer.get(), "(u)", &process);
  return static_cast<pid_t>(process);
}

bool InstalledAgent::waitForActivatedLog(const std::string& text,
                                         std::chrono::milliseconds deadline) {
  return bus_.daemon().waitForErr(text, deadline);
}

std::string linkTo(const std::string& portalUrl, const std::string& sessionId,
                   const std::string& scheme) {
  return scheme + "://join?portalURI=" +
         addPercentEncoding(portalUrl + "?session_id=" + sessionId,
                            CharacterSet("abcdefghijklmnopqrstuvwxyz0123456789"));
}

std::size_t openDescriptors(pid_t process) {
  const std::filesystem::directory_iterator entries("/proc/" + std::to_string(process) + "/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace vendril
