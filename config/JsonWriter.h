#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/PropertyList.h"

namespace vendril {

/// The members of a JSON object, in the order in which they are written.
using JsonMembers = std::vector<std::pair<std::string, PropertyList>>;

/// What became of writing an object: its bytes, or the reason why there are none.
struct JsonResult {
  std::optional<std::string> bytes;
  std::string error;
};

/// True when JSON has a form for every value: no date, no data, no infinity, no NaN, at any depth.
bool isValidJsonObject(const JsonMembers& members);

/// Writes an object without white space. A solidus is escaped; characters outside ASCII are not.
JsonResult writeJson(const JsonMembers& members);

/// Writes an object over several lines, in ASCII without control characters: it may be shown on a
/// terminal whatever it holds.
JsonResult writeReadableJson(const JsonMembers& members);

}  // namespace vendril
