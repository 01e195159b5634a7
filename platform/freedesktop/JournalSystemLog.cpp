#include "platform/freedesktop/JournalSystemLog.h"

#include <fmt/format.h>
#include <glib.h>
#include <unistd.h>

#include <array>
#include <exception>

#include "platform/freedesktop/LogRecord.h"

namespace vendril {
namespace {

constexpr const char* kIdentifier = "vendril";

/// The syslog severity "informational" of RFC 5424.
constexpr const char* kPriority = "6";

/// Where the journal takes records, as systemd documents it in its native journal protocol.
constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

void writeToJournal(std::string_view message) {
  const std::array<GLogField, 3> fields{{{"MESSAGE", message.data(), gssize(message.size())},
                                         {"PRIORITY", kPriority, -1},
                                         {"SYSLOG_IDENTIFIER", kIdentifier, -1}}};
  g_log_writer_journald(G_LOG_LEVEL_INFO, fields.data(), fields.size(), nullptr);
}

}  // namespace

JournalSystemLog::JournalSystemLog()
    : toJournal_(isJournalThere()),
      toStandardError_(!toJournal_ || g_log_writer_is_journald(STDERR_FILENO) == FALSE),
      process_(fmt::format(" {}[{}] ", kIdentifier, ::getpid())),
      standardError_(STDERR_FILENO) {}

bool JournalSystemLog::isJournalThere() {
  return ::access(kJournalSocket, W_OK) == 0;
}

void JournalSystemLog::write(std::string_view message) noexcept {
  try {
    if (toJournal_) {
      writeToJournal(message);
    }
    if (toStandardError_) {
      standardError_.write(recordOf(message));
    }
  } catch (const std::exception&) {
    // No memory for the record: the message is lost, its writer goes on.
    return;
  }
}

std::string JournalSystemLog::recordOf(std::string_view message) const {
  std::string record = time_.stringFromDate(std::chrono::system_clock::now());
  record.reserve(record.size() + process_.size() + message.size() + 1);
  record += process_;
  appendLogText(record, message);
  record += '\n';
  return record;
}

}  // namespace vendril
