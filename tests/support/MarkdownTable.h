#pragma once

#include <string>
#include <vector>

namespace vendril {

/// The rows below the first table after `heading` in a Markdown text, the line of column names left
/// out. A cell that is code comes without its backticks.
std::vector<std::vector<std::string>> tableAfter(const std::string& markdown,
                                                 const std::string& heading);

}  // namespace vendril
