#include "support/MarkdownTable.h"

#include <sstream>
#include <stdexcept>
#include <string_view>

namespace vendril {
namespace {

std::string plainCell(std::string_view cell) {
  const std::size_t start = cell.find_first_not_of(' ');
  if (start == std::string_view::npos) {
    return {};
  }
  cell = cell.substr(start, cell.find_last_not_of(' ') - start + 1);
  if (cell.size() > 1 && cell.front() == '`' && cell.back() == '`') {
    cell = cell.substr(1, cell.size() - 2);
  }
  return std::string(cell);
}

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream parts(line.substr(1));
  for (std::string cell; std::getline(parts, cell, '|');) {
    cells.push_back(plainCell(cell));
  }
  return cells;
}

}  // namespace

std::vector<std::vector<std::string>> tableAfter(const std::string& markdown,
                                                 const std::string& heading) {
  const std::size_t start = markdown.find("\n" + heading + "\n");
  if (start == std::string::npos) {
    throw std::runtime_error("no heading " + heading);
  }
  std::istringstream lines(markdown.substr(start + heading.size() + 2));
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(lines, line) && (rows.empty() || line.starts_with('|'));) {
    if (line.starts_with('|')) {
      rows.push_back(cellsOf(line));
    }
  }
  constexpr std::ptrdiff_t kHead = 2;
  if (rows.size() <= kHead) {
    throw std::runtime_error("no table after " + heading);
  }
  rows.erase(rows.begin(), rows.begin() + kHead);
  return rows;
}

}  // namespace vendril
