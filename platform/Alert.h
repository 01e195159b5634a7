#pragma once

#include <string>

namespace vendril {

/// A modal message box. Main thread only.
class Alert {
 public:
  enum class Style { warning = 0, informational = 1, critical = 2 };

  /// The result of a run that the first button ended.
  static constexpr long kFirstButtonReturn = 1000;
  /// The result of a run that ended without a button.
  static constexpr long kAbortReturn = -1001;

  virtual ~Alert() = default;

  virtual void addButtonWithTitle(const std::string& title) = 0;
  virtual void setMessageText(const std::string& text) = 0;
  virtual void setInformativeText(const std::string& text) = 0;
  virtual void setAlertStyle(Style style) = 0;

  /// Shows the alert and returns when it is answered, with the code of the button that ended it, or
  /// with another code when nothing could be shown. Events go on being handled meanwhile.
  virtual long runModal() = 0;
};

}  // namespace vendril
