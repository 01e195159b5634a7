#include <clocale>
#include <memory>

#include "app/ZQN5VendrilAppDelegate.h"
#include "platform/freedesktop/FreedesktopHost.h"

int main(int argc, char** argv) {
  using vendril::FreedesktopHost;
  using vendril::Host;
  using vendril::ZQN5ProtocolHandler;
  using vendril::ZQN5VendrilAppDelegate;

  // Texts and their encoding; each further category would be two more files to look for.
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_MESSAGES, "");
  FreedesktopHost host(argc, argv, [](const vendril::Bundle& bundle) {
    return ZQN5ProtocolHandler::supportedURLSchemes(bundle);
  });
  Host::install(&host);
  auto delegate = std::make_shared<ZQN5VendrilAppDelegate>();
  const int status = host.application().main(argc, argv, *delegate);
  // The outcome of every request is logged while the delegate and the log are still there.
  host.finishRequests();
  delegate->setOperationQueue(nullptr);
  delegate.reset();
  Host::install(nullptr);
  return status;
}
