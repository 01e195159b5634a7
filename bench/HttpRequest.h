#pragma once

#include <string>

namespace vendril::bench {

/// True when `text` holds a whole HTTP request, its body included.
bool isWholeRequest(const std::string& text);

}  // namespace vendril::bench
