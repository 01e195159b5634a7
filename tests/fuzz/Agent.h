#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/ZQN5VendrilAppDelegate.h"
#include "support/FakeHost.h"
#include "support/FreshProtocolHandler.h"
#include "support/TemporaryDirectory.h"

namespace vendril::fuzz {

/// A directory for the whole run of a fuzz target.
inline const TemporaryDirectory& scratchDirectory() {
  static const TemporaryDirectory kDirectory;
  return kDirectory;
}

/// A delegate that is about to finish launching, on a desktop in memory (`Desktop` is a FakeHost).
/// The application is the default handler of its schemes and a login item; the user's Library lies
/// in the scratch directory.
template <class Desktop = FakeHost>
struct Agent {
  Agent() {
    host.fakeUserDirectories.directories = {scratchDirectory().path()};
    host.fakeLaunchServices.defaults = {{"vendril", "com.brelto.vendril"},
                                        {"mervale", "com.brelto.vendril"}};
    host.fakeSessionLoginItems.add("Vendril", host.fakeBundle.path);
    delegate->applicationWillFinishLaunching();
  }

  Desktop host;
  FreshProtocolHandler freshProtocolHandler;
  std::shared_ptr<ZQN5VendrilAppDelegate> delegate = std::make_shared<ZQN5VendrilAppDelegate>();
};

}  // namespace vendril::fuzz
