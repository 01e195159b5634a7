#include "tools/Transcript.h"

#include <exception>

namespace vendril::tools {

void Transcript::write(std::string_view message) noexcept {
  try {
    messages_.emplace_back(message);
  } catch (const std::exception&) {
    // No memory for the message: it is lost, its writer goes on.
    return;
  }
}

LoggerBlock Transcript::loggerBlock() {
  return [this](std::string_view message) { write(message); };
}

}  // namespace vendril::tools
