#pragma once

#include <gio/gio.h>

#include <string>

#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// The interface through which a desktop starts and calls applications.
inline constexpr const char* kApplicationInterface = "org.freedesktop.Application";

/// The path at which the application with this bus name offers that interface, as the desktop entry
/// standard derives it.
std::string applicationObjectPath(const std::string& busName);

/// The application's object on the bus. `Open` delivers each URI, byte for byte, as a URL event and
/// answers when all have been handled; `Activate` and `ActivateAction` do nothing. Calls are
/// dispatched by the main context. The object is there as long as this one is.
///
/// It is not GApplication's: that one makes a file object of each URI, and a virtual file system
/// that is installed on the desktop then changes its text.
class BusEndpoint {
 public:
  /// `events` outlives the endpoint.
  BusEndpoint(GDBusConnection* connection, const std::string& objectPath, DesktopUrlEvents& events);
  BusEndpoint(const BusEndpoint&) = delete;
  BusEndpoint& operator=(const BusEndpoint&) = delete;
  ~BusEndpoint();

 private:
  GObjectPtr<GDBusConnection> connection_;
  guint registration_;
};

}  // namespace vendril
