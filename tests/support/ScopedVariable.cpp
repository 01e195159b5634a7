#include "support/ScopedVariable.h"

#include <cstdlib>
#include <utility>

namespace vendril {
namespace {

std::optional<std::string> get(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

void set(const std::string& name, const std::optional<std::string>& value) {
  if (value) {
    ::setenv(name.c_str(), value->c_str(), 1);
  } else {
    ::unsetenv(name.c_str());
  }
}

}  // namespace

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)), old_(get(name_)) {
  set(name_, value);
}

ScopedVariable::~ScopedVariable() {
  set(name_, old_);
}

}  // namespace vendril
