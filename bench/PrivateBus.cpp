#include "bench/PrivateBus.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace vendril::bench {
namespace {

// com.example.Name becomes /com/example/Name.
std::string objectPathOf(const std::string& busName) {
  std::string path = "/" + busName;
  for (char& character : path) {
    if (character == '.') {
      character = '/';
    }
  }
  return path;
}

GVariant* openParameters(const std::string& link) {
  const char* const links[] = {link.c_str(), nullptr};
  return g_variant_new("(^asa{sv})", links, nullptr);
}

/// Sends standard error nowhere, for those who inherit it meanwhile.
class QuietStandardError {
 public:
  QuietStandardError() : kept_(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  QuietStandardError(const QuietStandardError&) = delete;
  QuietStandardError& operator=(const QuietStandardError&) = delete;
  ~QuietStandardError() {
    dup2(kept_, STDERR_FILENO);
    close(kept_);
  }

 private:
  int kept_;
};

constexpr const char* kAddress = "DBUS_SESSION_BUS_ADDRESS";

std::string presentAddress() {
  const char* const address = std::getenv(kAddress);
  return address != nullptr ? address : "";
}

constexpr const char* kInterface = "org.freedesktop.Application";

}  // namespace

PrivateBus::PrivateBus(const std::string& serviceDirectory)
    : addressBefore_(presentAddress()), daemon_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  if (!serviceDirectory.empty()) {
    g_test_dbus_add_service_dir(daemon_, serviceDirectory.c_str());
  }
  {
    const QuietStandardError forTheServicesThatTheBusStarts;
    g_test_dbus_up(daemon_);
  }
  connection_ = g_dbus_connection_new_for_address_sync(
      g_test_dbus_get_bus_address(daemon_),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
  if (connection_ == nullptr) {
    throw std::runtime_error("cannot connect to the private bus");
  }
}

PrivateBus::~PrivateBus() {
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  g_test_dbus_down(daemon_);
  g_object_unref(daemon_);
  if (!addressBefore_.empty()) {
    setenv(kAddress, addressBefore_.c_str(), 1);
  }
}

void PrivateBus::open(const std::string& busName, const std::string& link) {
  g_dbus_connection_call(connection_, busName.c_str(), objectPathOf(busName).c_str(), kInterface,
                         "Open", openParameters(link), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                         nullptr, nullptr);
}

void PrivateBus::openAndWait(const std::string& busName, const std::string& link) {
  g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
      connection_, busName.c_str(), objectPathOf(busName).c_str(), kInterface, "Open",
      openParameters(link), nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, nullptr);
  if (reply == nullptr) {
    throw std::runtime_error(busName + " does not open links");
  }
}

GVariant* PrivateBus::askBus(const char* method, const std::string& busName,
                             const char* replyType) {
  return g_dbus_connection_call_sync(
      connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
      g_variant_new("(s)", busName.c_str()), G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr, nullptr);
}

bool PrivateBus::hasOwner(const std::string& busName) {
  g_autoptr(GVariant) reply = askBus("NameHasOwner", busName, "(b)");
  gboolean owned = FALSE;
  if (reply != nullptr) {
    g_variant_get(reply, "(b)", &owned);
  }
  return owned != FALSE;
}

void PrivateBus::waitForOwner(const std::string& busName, bool owned) {
  using namespace std::chrono_literals;
  // Long enough for a program that runs in valgrind.
  const auto deadline = std::chrono::steady_clock::now() + 30s;
  while (hasOwner(busName) != owned) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error(busName + (owned ? " did not come up" : " did not go away"));
    }
    std::this_thread::sleep_for(1ms);
  }
}

pid_t PrivateBus::ownerOf(const std::string& busName) {
  g_autoptr(GVariant) reply = askBus("GetConnectionUnixProcessID", busName, "(u)");
  guint32 process = 0;
  if (reply == nullptr) {
    throw std::runtime_error("nobody owns " + busName);
  }
  g_variant_get(reply, "(u)", &process);
  return static_cast<pid_t>(process);
}

}  // namespace vendril::bench
