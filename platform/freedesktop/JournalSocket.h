#pragma once

#include <string>
#include <string_view>

#include "platform/freedesktop/FileDescriptor.h"
#include "platform/freedesktop/ReaderPatience.h"

struct msghdr;

namespace vendril {

/// The way to the journal in its native protocol, as systemd documents it. It never waits long for
/// a journal that is stopped or full: a record is given up when there is no room for it. A journal
/// that comes back under the same path gets the next record. Any thread may write at any time.
class JournalSocket {
 public:
  /// Where systemd's journal takes records.
  static constexpr const char* kSystemPath = "/run/systemd/journal/socket";

  /// Finds out, once for all, whether there is a journal. `fields` go before the message of each
  /// record: lines "NAME=value", each with its end.
  explicit JournalSocket(std::string_view fields, std::string path = kSystemPath);

  /// Whether a journal takes records under this path now.
  static bool isThere(const std::string& path = kSystemPath);

  /// What `isThere` answered to the constructor.
  bool isPresent() const { return static_cast<bool>(socket_); }

  /// Sends one record, whole or not at all. Only when the journal is present.
  void write(std::string_view message) noexcept;

 private:
  bool connect() noexcept;
  bool send(const msghdr& datagram) noexcept;
  void sendAsFile(const msghdr& record) noexcept;

  std::string path_;
  /// What stands before the length of the message.
  std::string head_;
  FileDescriptor socket_;
  ReaderPatience patience_;
};

}  // namespace vendril
