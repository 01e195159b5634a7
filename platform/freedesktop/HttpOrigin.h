#pragma once

#include <optional>
#include <string>

#include "platform/Url.h"

namespace vendril {

/// What the requests to one server have in common: "scheme://host:port" in lower case, the port
/// filled in. Nothing when the URL is neither http nor https or names no host.
std::optional<std::string> httpOrigin(const Url& url);

/// Why no request can be sent to a URL; nothing when it has an origin or names a file.
std::optional<std::string> refusalOf(const Url& url);

}  // namespace vendril
