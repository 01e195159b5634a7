#include "portal/Connections.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

namespace vendril::portal {
namespace {

using NameCall = int (*)(int, sockaddr*, socklen_t*);

/// The port of one end of an IPv4 connection; 0 when the descriptor is none.
int portFrom(NameCall call, int descriptor) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  const bool known = call(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0;
  return known && address.sin_family == AF_INET ? ntohs(address.sin_port) : 0;
}

/// Calls `act` with the descriptor and the client's port of every connection to `port`.
void forEachConnection(int port, const std::function<void(int descriptor, int peer)>& act) {
  // Without exceptions: a signal asks for this as well, when there may be no descriptor left for
  // the folder.
  std::error_code error;
  for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end;
       !error && entry != end; entry.increment(error)) {
    const int descriptor = std::stoi(entry->path().filename().string());
    const int peer = portFrom(::getpeername, descriptor);
    if (peer != 0 && portFrom(::getsockname, descriptor) == port) {
      act(descriptor, peer);
    }
  }
}

}  // namespace

void resetConnection(int port, int peer) {
  forEachConnection(port, [peer](int descriptor, int found) {
    if (found == peer) {
      // To connect to no address resets a connection at once. A close with SO_LINGER would come
      // after the library's orderly shutdown, and the client could see that instead.
      const sockaddr nowhere{.sa_family = AF_UNSPEC, .sa_data = {}};
      static_cast<void>(::connect(descriptor, &nowhere, sizeof nowhere));
    }
  });
}

void breakOffConnections(int port) {
  forEachConnection(port, [](int descriptor, int) { ::shutdown(descriptor, SHUT_RDWR); });
}

}  // namespace vendril::portal
