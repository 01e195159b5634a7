#pragma once

#include <string>
#include <vector>

namespace vendril {

/// Where the user's files lie.
class UserDirectories {
 public:
  virtual ~UserDirectories() = default;

  /// The user's Library directories, the preferred one first; empty when none is known.
  virtual std::vector<std::string> libraryDirectories() const = 0;
};

}  // namespace vendril
