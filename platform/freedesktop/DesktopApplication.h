#pragma once

#include <gio/gio.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/Application.h"
#include "platform/SystemLog.h"
#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/GlibPtr.h"
#include "platform/freedesktop/GlibSource.h"
#include "platform/freedesktop/SessionBus.h"

namespace vendril {

/// The application as a freedesktop.org desktop knows it: one process in a session, which owns its
/// name on the session bus and gets links through it. Main thread only.
class DesktopApplication : public Application {
 public:
  /// The URL schemes of the application's bundle. Asked only when there are arguments.
  using Schemes = std::function<std::set<std::string>()>;

  /// `log` and `events` outlive the application. `busName` is also what its object path is derived
  /// from.
  DesktopApplication(SystemLog& log, DesktopUrlEvents& events, std::string busName,
                     Schemes schemes);

  /// Arguments whose scheme is one of the bundle's are links; all others are left alone.
  ///
  /// The first process of a session runs until SIGTERM, SIGINT, SIGHUP, the end of the session bus
  /// or `terminate` ends it, and returns 0; 1 when an exception has left the launch. Any other
  /// process hands its links to the first and returns 0, or 1 when that one does not answer within
  /// five seconds; it does not call the delegate. Without a session bus every process is a first
  /// one. To be called once.
  int main(int argc, char** argv, ApplicationDelegate& delegate) override;

  void terminate() override;

  /// Cancelled when the application is asked to terminate, for whoever runs the main context in
  /// between. Belongs to the application.
  GCancellable* termination() const { return termination_.get(); }

 private:
  enum class Role { first, handedOver, unanswered };

  std::vector<std::string> linksAmong(int argc, char** argv) const;
  Role findRole(SessionBus& bus, const std::vector<std::string>& links) const;
  void watchSignals();
  bool tryLaunch(ApplicationDelegate& delegate, const std::vector<std::string>& links);
  void launch(ApplicationDelegate& delegate, const std::vector<std::string>& links);
  void run();
  void leave(SessionBus& bus) const;

  SystemLog& log_;
  DesktopUrlEvents& events_;
  std::string busName_;
  Schemes schemes_;
  GMainLoopPtr loop_;
  GObjectPtr<GCancellable> termination_;
  std::vector<GlibSource> signals_;
};

}  // namespace vendril
