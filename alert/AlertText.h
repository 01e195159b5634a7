#pragma once

#include <string>

namespace vendril {

/// What the alert shows. Plain text in UTF-8: nothing in it is markup or a mnemonic.
struct AlertText {
  std::string iconName;
  std::string message;
  std::string information;
  std::string button;
};

}  // namespace vendril
