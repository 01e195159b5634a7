#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Alert.h"

namespace vendril {

/// An alert that nobody sees: `whileModal` runs in place of the user, then the run ends with
/// `result`.
class FakeAlert : public Alert {
 public:
  std::vector<std::string> buttons;
  std::string messageText;
  std::string informativeText;
  Style style = Style::informational;
  int runs = 0;
  long result = kFirstButtonReturn;
  std::function<void()> whileModal;

  void addButtonWithTitle(const std::string& title) override { buttons.push_back(title); }
  void setMessageText(const std::string& text) override { messageText = text; }
  void setInformativeText(const std::string& text) override { informativeText = text; }
  void setAlertStyle(Style value) override { style = value; }
  long runModal() override {
    ++runs;
    if (whileModal) {
      whileModal();
    }
    return result;
  }
};

}  // namespace vendril
