#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/Bundle.h"
#include "platform/Host.h"

namespace vendril {
namespace {

std::string localized(std::string_view key, std::string_view defaultText) {
  return Host::current().bundle().localizedString(key, defaultText, "Localizable");
}

}  // namespace

void ZQN5VendrilAppDelegate::showAlert() {
  if (errorAlert_) {
    logger_->log("[%@] There is already error alert - do not show again%s", kClassName, "");
    return;
  }
  logger_->log("[%@] Send confirmation to the user about network connection issues%s", kClassName,
               "");
  // Stored before it is shown: a second call from inside the modal run must find it.
  const std::shared_ptr<Alert> alert = Host::current().makeAlert();
  errorAlert_ = alert;
  alert->addButtonWithTitle(localized("ZQN5ErrorHandler.buttonOk.title", "OK"));
  alert->setMessageText(localized("ZQN5Vendril.connectionError.title", "Network connection error"));
  alert->setInformativeText(
      localized("ZQN5Vendril.connectionError.messageMervale",
                "There was an error when Vendril was sending data to Mervale Meeting Service"));
  alert->setAlertStyle(Alert::Style::warning);
  if (alert->runModal() == Alert::kFirstButtonReturn) {
    logger_->log("[%@] User confirmed about network connection issues, remove errorAlert%s",
                 kClassName, "");
    errorAlert_ = nullptr;
  }
}

}  // namespace vendril
