#include "platform/freedesktop/GlibMessages.h"

#include <glib.h>

#include <atomic>
#include <exception>
#include <span>
#include <string>
#include <string_view>

namespace vendril {
namespace {

/// GLib takes one writer for the whole life of the process.
std::atomic<SystemLog*> currentLog = nullptr;

using Fields = std::span<const GLogField>;

std::string_view valueOf(std::string_view key, Fields fields) {
  for (const GLogField& field : fields) {
    if (key == field.key) {
      const char* const text = static_cast<const char*>(field.value);
      return field.length < 0 ? std::string_view(text)
                              : std::string_view(text, static_cast<std::size_t>(field.length));
    }
  }
  return {};
}

GLogWriterOutput writeTo(SystemLog& log, GLogLevelFlags level, Fields fields) {
  const std::string domain(valueOf("GLIB_DOMAIN", fields));
  if (g_log_writer_default_would_drop(level, domain.empty() ? nullptr : domain.c_str()) == FALSE) {
    const std::string_view origin = domain.empty() ? "GLib" : std::string_view(domain);
    log.write(std::string(origin).append(": ").append(valueOf("MESSAGE", fields)));
  }
  return G_LOG_WRITER_HANDLED;
}

GLogWriterOutput onMessage(GLogLevelFlags level, const GLogField* fields, gsize count,
                           gpointer /*unused*/) {
  SystemLog* const log = currentLog;
  if (log == nullptr) {
    return g_log_writer_default(level, fields, count, nullptr);
  }
  try {
    return writeTo(*log, level, Fields(fields, count));
  } catch (const std::exception&) {
    // No memory for the line: the message is lost, its sender goes on.
    return G_LOG_WRITER_UNHANDLED;
  }
}

}  // namespace

GlibMessages::GlibMessages(SystemLog& log) {
  static const bool installed = [] {
    g_log_set_writer_func(onMessage, nullptr, nullptr);
    return true;
  }();
  static_cast<void>(installed);
  currentLog = &log;
}

GlibMessages::~GlibMessages() {
  currentLog = nullptr;
}

}  // namespace vendril
