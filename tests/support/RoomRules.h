#pragma once

#include <string>
#include <vector>

namespace vendril {

/// A file of the source tree, by its path from the root.
struct SourceFile {
  std::string path;
  std::vector<std::string> lines;
};

/// The C++ files of every room of the tree at `root`, in no particular order.
std::vector<SourceFile> roomFiles(const std::string& root);

/// The files of the tree at `root` that people write by hand and that are not documents: the C++
/// files, the build's, the scripts and what is installed.
std::vector<SourceFile> handWrittenFiles(const std::string& root);

/// Includes that the rooms' order forbids: upwards or sideways, of the real desktop by anyone but
/// the entry point and the tools, not written from the root, or of a desktop or network library in
/// a header that does not belong to the real desktop. Each as "FILE:LINE: what is wrong".
std::vector<std::string> includeViolations(const SourceFile& file);

/// The file itself when it is longer than one reads in one go: a header over 160 lines, a source
/// over 450.
std::vector<std::string> lengthViolations(const SourceFile& file);

/// Notes of work left undone.
std::vector<std::string> leftoverViolations(const SourceFile& file);

}  // namespace vendril
