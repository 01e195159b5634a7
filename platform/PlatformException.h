#pragma once

#include <exception>
#include <string>
#include <utility>

namespace vendril {

/// A failure inside the platform that carries a name and a reason. The only kind of exception that
/// the processing of a link catches; every other kind passes through it.
class PlatformException : public std::exception {
 public:
  PlatformException(std::string name, std::string reason)
      : name_(std::move(name)), reason_(std::move(reason)) {}

  const std::string& name() const { return name_; }
  const std::string& reason() const { return reason_; }
  const char* what() const noexcept override { return reason_.c_str(); }

 private:
  std::string name_;
  std::string reason_;
};

/// The name of the exception for an argument that an operation cannot take.
inline constexpr const char* kInvalidArgumentException = "NSInvalidArgumentException";

}  // namespace vendril
