#pragma once

#include <string_view>

namespace vendril {

/// True when `bytes` are a binary property list of version 00 within the limits: every object that
/// the root leads to lies whole between the header and the offset table, is of a kind that XML
/// property lists know too, and does not contain itself; keys are texts; texts are Unicode without
/// U+0000. Objects that nothing leads to are never read, by libplist neither.
bool isSafeBinaryPlist(std::string_view bytes);

}  // namespace vendril
