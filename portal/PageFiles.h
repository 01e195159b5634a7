#pragma once

#include <array>
#include <string_view>

namespace vendril::portal {

/// A file of the page, built into the program.
struct PageFile {
  std::string_view path;
  std::string_view contentType;
  std::string_view contents;
};

/// All files of the page, as portal/page/ has them.
extern const std::array<PageFile, 4> kPageFiles;

}  // namespace vendril::portal
