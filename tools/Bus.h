#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/freedesktop/SessionBus.h"

namespace vendril::tools {

/// The session bus as this process finds it.
struct Bus {
  enum class State {
    /// Nothing in the environment says where it is, or it says that one is to be started.
    unnamed,
    /// It is named, but it cannot be talked to.
    unreachable,
    reached
  };

  State state = State::unnamed;
  /// Why it cannot be talked to.
  std::string error;
  /// Null unless it is reached.
  std::unique_ptr<SessionBus> connection;

  /// Connects to the bus of the session. Never starts one, which GIO would do where it finds none.
  static Bus find();

  /// The process that owns `name`; nothing when none does.
  std::optional<pid_t> ownerOf(const std::string& name) const;

  /// True when the bus knows how to start an owner of `name`.
  bool canStart(const std::string& name) const;
};

}  // namespace vendril::tools
