#pragma once

#include "platform/LoggerBlock.h"
#include "platform/SessionLoginItems.h"
#include "platform/Url.h"

namespace vendril {

/// Puts the application into the session's login items and takes it out again. Keeps no state: each
/// operation reads the list anew. Main thread only. A logger block may be absent; then nothing is
/// logged and everything else happens the same way.
class ZQN5Launcher {
 public:
  ZQN5Launcher() = delete;

  /// True when some login item's target is the application.
  static bool launchOnLogin();

  /// Removes stale login items, then adds an item for the application at the end of the list or
  /// removes every item of the application. Adding does not look for an item that is there already.
  /// `launchOnLogin()` tells afterwards whether it worked.
  static void setLaunchOnLogin(bool launchOnLogin, const LoggerBlock& loggerBlock);

  /// True for an item that an earlier installation left behind: one with a name of ours that points
  /// elsewhere, or nowhere.
  static bool isStaleLoginItem(const LoginItem& item, const LoggerBlock& loggerBlock);

  /// Removes the first such item. True when there was one, even if the desktop refused to remove
  /// it.
  static bool cleanLoginItemWithloggerBlock(const LoggerBlock& loggerBlock);

  /// Removes all such items, one in each pass. Gives up after 100 passes, so that an item that
  /// cannot be removed ends it too.
  static void cleanLoginItemsWithloggerBlock(const LoggerBlock& loggerBlock);

 private:
  /// The file URL of the application's bundle, which its own login items resolve to.
  static Url bundleUrl();
};

}  // namespace vendril
