// The agent with one thing more: SIGUSR1 makes the delegate show its alert, which nothing in the
// agent itself does.

#include <glib-unix.h>

#include <clocale>
#include <csignal>
#include <memory>

#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/freedesktop/FreedesktopHost.h"

namespace {

gboolean showAlert(gpointer delegate) {
  static_cast<vendril::ZQN5VendrilAppDelegate*>(delegate)->showAlert();
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argc, char** argv) {
  using vendril::ZQN5ProtocolHandler;

  std::setlocale(LC_ALL, "");
  vendril::FreedesktopHost host(argc, argv, [](const vendril::Bundle& bundle) {
    return ZQN5ProtocolHandler::supportedURLSchemes(bundle);
  });
  vendril::Host::install(&host);
  const auto delegate = std::make_shared<vendril::ZQN5VendrilAppDelegate>();
  g_unix_signal_add(SIGUSR1, showAlert, delegate.get());
  const int status = host.application().main(argc, argv, *delegate);
  host.finishRequests();
  delegate->setOperationQueue(nullptr);
  return status;
}
