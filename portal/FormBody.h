#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vendril::portal {

/// The fields of a form in the order in which they were sent, decoded.
using FormFields = std::vector<std::pair<std::string, std::string>>;

/// Decodes the body of a form (application/x-www-form-urlencoded). A plus sign is a space; a
/// malformed escape stands for itself; a field without "=" has an empty value.
FormFields decodeFormBody(std::string_view body);

}  // namespace vendril::portal
