#pragma once

#include "platform/Alert.h"

namespace vendril {

/// Hands every operation on to another Alert, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingAlert : public Alert {
 public:
  explicit ForwardingAlert(Alert& target) : target_(target) {}

  void addButtonWithTitle(const std::string& title) override { target_.addButtonWithTitle(title); }
  void setMessageText(const std::string& text) override { target_.setMessageText(text); }
  void setInformativeText(const std::string& text) override { target_.setInformativeText(text); }
  void setAlertStyle(Style style) override { target_.setAlertStyle(style); }
  long runModal() override { return target_.runModal(); }

 private:
  Alert& target_;
};

}  // namespace vendril
