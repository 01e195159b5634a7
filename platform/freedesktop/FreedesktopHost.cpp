#include "platform/freedesktop/FreedesktopHost.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/freedesktop/HelperAlert.h"
#include "platform/freedesktop/ThreadOperationQueue.h"

namespace vendril {
namespace {

/// Where the program that shows alerts is installed, seen from the directory of this one.
constexpr const char* kAlertHelper = "../libexec/vendril/vendril-alert";

std::string alertHelperPath(const Bundle& bundle) {
  const std::filesystem::path program = bundle.bundlePath();
  return (program.parent_path() / kAlertHelper).lexically_normal();
}

/// The bus tells a service that it starts which bus it is, and so do the service's own children
/// tell theirs; but it gives a service no words.
bool isStartedByBus(int argc) {
  return argc == 1 && std::getenv("DBUS_STARTER_ADDRESS") != nullptr;
}

}  // namespace

FreedesktopHost::FreedesktopHost(int argc, char** argv, SchemeReader schemesOf)
    : processInfo_(argc, argv),
      userDefaults_(userDefaultsPath(userDirectories_, bundle_.lowercaseIdentifier()),
                    propertyListFiles_, systemLog_),
      sessionLoginItems_(bundle_),
      urlEvents_(systemLog_),
      application_(systemLog_, urlEvents_, bundle_.lowercaseIdentifier(),
                   [this, schemesOf = std::move(schemesOf)] { return schemesOf(bundle_); }),
      urlConnection_(std::make_unique<CurlUrlConnection>()) {
  CurlUrlConnection::prepareProcess();
  // Most links lead to a request, whose libraries are loaded while the link is still being handled.
  urlEvents_.setArrivalNotice([this] { urlConnection_->prepare(); });
  if (isStartedByBus(argc)) {
    // With a link, as a rule.
    urlConnection_->prepare();
  }
}

std::shared_ptr<Alert> FreedesktopHost::makeAlert() {
  return std::make_shared<HelperAlert>(alertHelperPath(bundle_), systemLog_,
                                       application_.termination());
}

std::shared_ptr<OperationQueue> FreedesktopHost::makeOperationQueue() {
  return std::make_shared<ThreadOperationQueue>();
}

}  // namespace vendril
