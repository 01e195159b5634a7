#pragma once

namespace vendril {

/// A window of the application's main interface. Nothing is asked of it.
class Window {
 public:
  virtual ~Window() = default;
};

}  // namespace vendril
