#pragma once

#include <optional>
#include <string>

namespace vendril {

/// Gives an environment variable a value, or none, and its old one back in the end. Only while no
/// other thread runs.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const std::optional<std::string>& value);
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable();

 private:
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace vendril
