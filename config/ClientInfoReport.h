#pragma once

#include <functional>
#include <optional>
#include <string>

#include "config/JsonWriter.h"
#include "platform/LoggerBlock.h"

namespace vendril {

using JsonWriter = std::function<JsonResult(const JsonMembers& members)>;

/// The text of a client-info report with these members. Nothing, with one message to `loggerBlock`,
/// when a value has no JSON form, when `writer` fails, or when what it wrote is not UTF-8.
std::optional<std::string> serializeClientInfo(const JsonMembers& members,
                                               const LoggerBlock& loggerBlock,
                                               const JsonWriter& writer = writeJson);

}  // namespace vendril
