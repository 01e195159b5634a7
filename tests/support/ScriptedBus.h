#pragma once

#include <gio/gio.h>

#include <atomic>
#include <mutex>
#include <string>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// A message bus that plays the part of one on which somebody else owns every name: the first
/// question for a name gets the answer that it is taken, all later ones get none. What is sent to
/// the owner waits until the test answers it.
class ScriptedBus {
 public:
  /// Listens at a socket with this path, which must be free. Clients are let in by the main loop.
  explicit ScriptedBus(const std::string& path);
  ScriptedBus(const ScriptedBus&) = delete;
  ScriptedBus& operator=(const ScriptedBus&) = delete;
  ~ScriptedBus();

  std::string address() const;

  /// Whether a call to the owner of a name waits.
  bool hasCall() const;
  /// Answers it as a bus does when the owner has ended.
  void answerThatOwnerHasGone();
  /// How often a name has been asked for.
  int nameRequests() const { return nameRequests_; }

 private:
  static gboolean onConnection(GDBusServer* server, GDBusConnection* connection, gpointer bus);
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer bus);
  void take(GDBusMessage* message);
  void send(GDBusMessage* reply) const;

  GObjectPtr<GDBusServer> server_;
  GObjectPtr<GDBusConnection> connection_;
  guint filter_ = 0;
  std::atomic<int> nameRequests_ = 0;
  mutable std::mutex mutex_;
  GObjectPtr<GDBusMessage> call_;
};

}  // namespace vendril
