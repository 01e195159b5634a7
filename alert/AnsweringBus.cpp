#include "alert/AnsweringBus.h"

#include <cstdlib>

namespace vendril {
namespace {

constexpr guint kPatienceMs = 1000;

/// An address at which no bus can be.
constexpr const char* kNoBus = "disabled:";

gboolean onAlarm(gpointer overdue) {
  *static_cast<bool*>(overdue) = true;
  return G_SOURCE_CONTINUE;
}

}  // namespace

AnsweringBus::AnsweringBus() {
  GCancellable* const patience = g_cancellable_new();
  g_bus_get(G_BUS_TYPE_SESSION, patience, onAnswer, this);
  if (!isAnswered()) {
    setenv("DBUS_SESSION_BUS_ADDRESS", kNoBus, 1);
    g_cancellable_cancel(patience);
    // Whoever asks for the bus now would get the connection that is on its way.
    isAnswered();
  }
  g_object_unref(patience);
}

// Waits for the answer as long as it may take.
bool AnsweringBus::isAnswered() const {
  bool overdue = false;
  const guint alarm = g_timeout_add(kPatienceMs, onAlarm, &overdue);
  while (!answered_ && !overdue) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(alarm);
  return answered_;
}

void AnsweringBus::onAnswer(GObject* /*source*/, GAsyncResult* result, gpointer bus) {
  auto& self = *static_cast<AnsweringBus*>(bus);
  self.connection_ = g_bus_get_finish(result, nullptr);
  self.answered_ = true;
  if (self.connection_ != nullptr) {
    g_dbus_connection_set_exit_on_close(self.connection_, FALSE);
  }
}

}  // namespace vendril
