#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/SystemLog.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// How long the session bus may take for one answer. The bus answers within microseconds; one that
/// does not is stopped or gone.
inline constexpr std::chrono::seconds kBusAnswerLimit{5};

/// The process's connection to the session bus. Main thread only.
class SessionBus {
 public:
  enum class NameRequest { granted, taken, failed };

  /// Called once, by the main context or as soon as there is a connection, when the bus has closed
  /// it.
  using Gone = std::function<void()>;

  /// Connects to the session's bus; null, and a line in `log`, when there is none or when it does
  /// not answer in time. Runs the main context. `log` outlives the result.
  static std::unique_ptr<SessionBus> connect(SystemLog& log, Gone gone);

  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  ~SessionBus();

  GDBusConnection* connection() const { return connection_.get(); }

  /// Asks for a well-known name, without waiting in the queue for it and without allowing anybody
  /// to take it over. A failure, and that the bus does not answer within `limit`, is recorded in
  /// the log.
  NameRequest requestName(const std::string& name, std::chrono::milliseconds limit);

  /// Gives a name back. All messages that were sent to the name before that have arrived when this
  /// returns.
  void releaseName(const std::string& name);

  /// Sends what is queued, as long as the bus takes it. Runs the main context.
  void flush();

 private:
  SessionBus(GObjectPtr<GDBusConnection> connection, SystemLog& log, Gone gone);

  static void onClosed(GDBusConnection* connection, gboolean remotePeerVanished, GError* error,
                       gpointer bus);

  void reportGone();

  GVariantPtr callBus(const char* method, GVariant* parameters, std::chrono::milliseconds limit,
                      GErrorSlot& error);

  GObjectPtr<GDBusConnection> connection_;
  SystemLog& log_;
  Gone gone_;
  bool hasGone_ = false;
  gulong closedHandler_;
};

}  // namespace vendril
