#pragma once

#include <string>

namespace vendril::tools {

/// True when what is at `path` belongs to the user, who may then change its permissions. Links are
/// followed; what cannot be looked at is nobody's.
bool isOwn(const std::string& path);

}  // namespace vendril::tools
