#include "platform/freedesktop/JournalSystemLog.h"

#include <fmt/format.h>
#include <glib.h>
#include <unistd.h>

#include <chrono>
#include <exception>

#include "platform/freedesktop/LogRecord.h"

namespace vendril {
namespace {

constexpr const char* kIdentifier = "vendril";

/// "6" is the syslog severity "informational" of RFC 5424.
std::string journalFields() {
  return fmt::format("PRIORITY=6\nSYSLOG_IDENTIFIER={}\n", kIdentifier);
}

}  // namespace

JournalSystemLog::JournalSystemLog()
    : journal_(journalFields()),
      toStandardError_(!journal_.isPresent() || g_log_writer_is_journald(STDERR_FILENO) == FALSE),
      process_(fmt::format(" {}[{}] ", kIdentifier, ::getpid())),
      standardError_(STDERR_FILENO) {}

bool JournalSystemLog::isJournalThere() {
  return JournalSocket::isThere();
}

void JournalSystemLog::write(std::string_view message) noexcept {
  try {
    if (journal_.isPresent()) {
      journal_.write(message);
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
  constexpr std::size_t kRoomForTimeAndEscapes = 64;
  std::string record;
  record.reserve(kRoomForTimeAndEscapes + process_.size() + message.size());
  appendRecordTime(record, std::chrono::system_clock::now());
  record += process_;
  appendLogText(record, message);
  record += '\n';
  return record;
}

}  // namespace vendril
