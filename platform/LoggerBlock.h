#pragma once

#include <functional>
#include <string_view>

#include "platform/MessageFormat.h"

namespace vendril {

/// Takes one message, already formatted. An empty block is an absent one: it logs nothing. A block
/// never replaces itself where it is kept while it runs.
using LoggerBlock = std::function<void(std::string_view message)>;

/// Formats a message and hands it to `block`; does neither when the block is absent.
template <class... Args>
void logTo(const LoggerBlock& block, MessageFormat<Args...> format, const Args&... arguments) {
  if (block) {
    block(formatMessage<Args...>(format, arguments...));
  }
}

}  // namespace vendril
