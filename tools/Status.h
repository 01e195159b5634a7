#pragma once

#include <string>
#include <vector>

#include "tools/Text.h"
#include "tools/checks/Check.h"

namespace vendril::tools {

/// The findings as text. In a table each has its level, its name and its sentence in columns; else
/// each is one line "LEVEL NAME VERDICT: SENTENCE". The command that mends it stands on a line of
/// its own behind "mend:", and an overall line comes first.
std::string statusText(const std::string& title, const std::vector<Check>& checks,
                       const Style& style);

}  // namespace vendril::tools
