#include "support/SilentBus.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <system_error>

namespace vendril {

SilentBus::SilentBus(const std::string& path)
    : address_("unix:path=" + path), socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  constexpr int kBacklog = 8;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(socket_.get(), kBacklog) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

}  // namespace vendril
