#pragma once

#include <string>

#include "support/UniqueFd.h"

namespace vendril {

/// A session bus that hangs: clients connect to it and never get an answer.
class SilentBus {
 public:
  /// Listens at a socket with this path, which must be free.
  explicit SilentBus(const std::string& path);

  const std::string& address() const { return address_; }

 private:
  std::string address_;
  UniqueFd socket_;
};

}  // namespace vendril
