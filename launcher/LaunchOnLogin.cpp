#include <algorithm>

#include "launcher/ZQN5Launcher.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/SessionLoginItems.h"

namespace vendril {
namespace {

void addItem(SessionLoginItems& loginItems, const Url& bundleUrl, const LoggerBlock& loggerBlock) {
  const auto item =
      loginItems.insertItemAtEnd(bundleUrl, {{SessionLoginItems::kHideOnLaunch, true}});
  if (item) {
    logTo(loggerBlock,
          "releasing item reference after inserting auto start item. Cosidering this as a "
          "success.");
  } else {
    logTo(loggerBlock,
          "not releasing item reference after inserting auto start item, because it was returned "
          "as NULL. Considering this as a failure.");
  }
}

void removeItems(SessionLoginItems& loginItems, const Url& bundleUrl,
                 const LoggerBlock& loggerBlock) {
  const auto items = loginItems.copySnapshot();
  logTo(loggerBlock, "searching for auto start item to be removed in array with '%lu' items.",
        items.size());
  for (const auto& item : items) {
    const ResolvedUrl target = item->resolvedUrl();
    if (target.url == bundleUrl) {
      logTo(loggerBlock, "found matching auto start item. Removing...");
      loginItems.remove(item);
    } else if (!target.url && target.error) {
      logTo(loggerBlock, "error retrieving auto start item from list '%@'", *target.error);
    }
  }
}

}  // namespace

Url ZQN5Launcher::bundleUrl() {
  return Url::fileUrlWithPath(Host::current().bundle().bundlePath());
}

bool ZQN5Launcher::launchOnLogin() {
  const Url ownUrl = bundleUrl();
  const auto items = Host::current().sessionLoginItems().copySnapshot();
  return std::any_of(items.begin(), items.end(), [&ownUrl](const SessionLoginItems::Item& item) {
    return item->resolvedUrl().url == ownUrl;
  });
}

void ZQN5Launcher::setLaunchOnLogin(bool launchOnLogin, const LoggerBlock& loggerBlock) {
  cleanLoginItemsWithloggerBlock(loggerBlock);
  logTo(loggerBlock, "setting launch on login to '%hhd'", launchOnLogin);
  const Url ownUrl = bundleUrl();
  logTo(loggerBlock, "bundle URL is '%@'", ownUrl);
  SessionLoginItems& loginItems = Host::current().sessionLoginItems();
  if (launchOnLogin) {
    addItem(loginItems, ownUrl, loggerBlock);
  } else {
    removeItems(loginItems, ownUrl, loggerBlock);
  }
}

}  // namespace vendril
