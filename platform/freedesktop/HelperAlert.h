#pragma once

#include <optional>
#include <string>

#include "platform/Alert.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

class SystemLog;

/// An alert that a helper program shows, so that this process never carries a toolkit. It has one
/// button: the title added last, or "OK". Main thread only.
class HelperAlert : public Alert {
 public:
  /// `helperPath` is the absolute path of the helper program. `systemLog` gets one line for each
  /// run that ends without an answer, and outlives the alert. Cancelling `termination` ends the
  /// runs in progress, for an event loop that is to end.
  HelperAlert(std::string helperPath, SystemLog& systemLog, GCancellable* termination);

  void addButtonWithTitle(const std::string& title) override { buttonTitle_ = title; }
  void setMessageText(const std::string& text) override { messageText_ = text; }
  void setInformativeText(const std::string& text) override { informativeText_ = text; }
  void setAlertStyle(Style style) override { style_ = style; }

  /// Runs the default main context until the helper has ended. `kFirstButtonReturn` when the button
  /// ended the alert; `kAbortReturn` when the helper could not be started, found no display, was
  /// closed or killed, or answered anything else.
  long runModal() override;

 private:
  std::optional<std::string> runHelper() const;

  std::string helperPath_;
  SystemLog& systemLog_;
  GObjectPtr<GCancellable> termination_;
  std::string buttonTitle_ = "OK";
  std::string messageText_;
  std::string informativeText_;
  Style style_ = Style::warning;
};

}  // namespace vendril
