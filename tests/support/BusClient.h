#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// What a desktop's launcher does on a bus, on a connection of its own. Calls wait for their answer
/// for up to 20 seconds and start services as the bus sees fit.
class BusClient {
 public:
  explicit BusClient(const std::string& address);
  BusClient(const BusClient&) = delete;
  BusClient& operator=(const BusClient&) = delete;
  ~BusClient();

  GDBusConnection* connection() const { return connection_.get(); }

  /// Calls a method of org.freedesktop.Application that the owner of `name` offers at `path`; the
  /// answer is the name of a D-Bus error, or empty when the call succeeded. Takes `parameters`.
  std::string call(const std::string& name, const std::string& path, const char* method,
                   GVariant* parameters) const;

  /// Opens links as a launcher does.
  std::string open(const std::string& name, const std::string& path,
                   const std::vector<std::string>& links) const;

  /// The process that owns `name`; nothing when none does.
  std::optional<pid_t> ownerOf(const std::string& name) const;

  /// The number of programs on the bus, this one among them.
  std::size_t connectionCount() const;

 private:
  GVariantPtr callBus(const char* method, GVariant* parameters) const;

  GObjectPtr<GDBusConnection> connection_;
};

/// The parameters of `Open`.
GVariant* openParameters(const std::vector<std::string>& links);

}  // namespace vendril
