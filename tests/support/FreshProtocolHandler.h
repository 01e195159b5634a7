#pragma once

#include <new>

#include "platform/Host.h"
#include "protocol/ZQN5ProtocolHandler.h"
#include "support/FakeHost.h"

namespace vendril {

/// Gives a test a shared protocol handler as new as at the start of the process, built on the
/// installed host. Make it after the host. At its end the handler lets go of the test's blocks.
class FreshProtocolHandler {
 public:
  FreshProtocolHandler() {
    createSharedInstance();
    rebuild();
  }
  FreshProtocolHandler(const FreshProtocolHandler&) = delete;
  FreshProtocolHandler& operator=(const FreshProtocolHandler&) = delete;
  ~FreshProtocolHandler() {
    ZQN5ProtocolHandler& handler = ZQN5ProtocolHandler::sharedInstance();
    handler.setBufferBlock({});
    handler.setEventBlock({});
    handler.setLoggerBlock({});
  }

  /// Builds the shared handler once more, for a host that has changed since.
  void rebuild() {
    ZQN5ProtocolHandler& handler = ZQN5ProtocolHandler::sharedInstance();
    handler.~ZQN5ProtocolHandler();
    new (&handler) ZQN5ProtocolHandler();
  }

 private:
  /// The first use in the process creates the handler. It happens on a host of its own, so that the
  /// test's host sees one creation only, whichever test runs first.
  static void createSharedInstance() {
    Host& host = Host::current();
    {
      FakeHost unobserved;
      ZQN5ProtocolHandler::sharedInstance();
    }
    Host::install(&host);
  }
};

}  // namespace vendril
