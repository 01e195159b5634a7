#pragma once

#include <string>
#include <string_view>

#include "platform/SystemLog.h"
#include "platform/freedesktop/JournalSocket.h"
#include "platform/freedesktop/UnblockedOutput.h"

namespace vendril {

/// The system's log: one record of the journal for each message when there is a journal, and one
/// record "yyyy-MM-dd HH:mm:ss.SSS vendril[PID] message" on standard error, unless that leads to
/// the journal itself. On standard error no text of a message can pass for a record of its own. A
/// reader of either that takes nothing never stops the writer.
class JournalSystemLog : public SystemLog {
 public:
  /// Finds out, once for all, whether there is a journal and where standard error leads.
  JournalSystemLog();

  /// True when there is a journal that takes records.
  static bool isJournalThere();

  void write(std::string_view message) noexcept override;

 private:
  std::string recordOf(std::string_view message) const;

  JournalSocket journal_;
  bool toStandardError_;
  std::string process_;
  UnblockedOutput standardError_;
};

}  // namespace vendril
