#pragma once

#include <optional>
#include <string>

#include "platform/Url.h"

namespace vendril {

/// What the requests to one server have in common: "scheme://host:port" in lower case, the port
/// filled in. Nothing when the URL is neither http nor https or names no host.
std::optional<std::string> httpOrigin(const Url& url);

}  // namespace vendril
