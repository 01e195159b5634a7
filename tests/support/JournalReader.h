#pragma once

#include <optional>
#include <string>

#include "support/UniqueFd.h"

namespace vendril {

/// A journal: a socket at a path, from which the test reads the records. It goes away with this
/// object. Throws std::system_error when there is something at the path.
class JournalReader {
 public:
  explicit JournalReader(std::string path);
  JournalReader(const JournalReader&) = delete;
  JournalReader& operator=(const JournalReader&) = delete;
  ~JournalReader();

  /// The next record that has arrived, from its file when it came as a sealed one; nothing when
  /// there is none.
  std::optional<std::string> read();
  /// The number of records that are there, all of which are read.
  std::size_t readAll();

 private:
  std::string path_;
  UniqueFd socket_;
};

}  // namespace vendril
