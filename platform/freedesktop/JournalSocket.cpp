#include "platform/freedesktop/JournalSocket.h"

#include <endian.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace vendril {
namespace {

constexpr int kNone = -1;

int socketTo(const std::string& path) {
  return JournalSocket::isThere(path) ? ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0) : kNone;
}

iovec partOf(std::string_view bytes) {
  return {const_cast<char*>(bytes.data()), bytes.size()};
}

/// A file in memory that holds the parts of `record` and cannot change any more, as the journal
/// wants it.
FileDescriptor sealedFile(const msghdr& record) {
  FileDescriptor file(::memfd_create("vendril-record", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  ssize_t left = 0;
  for (std::size_t i = 0; i < record.msg_iovlen; ++i) {
    left += static_cast<ssize_t>(record.msg_iov[i].iov_len);
  }
  const int parts = static_cast<int>(record.msg_iovlen);
  const bool whole = file && ::writev(file.get(), record.msg_iov, parts) == left;
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
  if (!whole || ::fcntl(file.get(), F_ADD_SEALS, kSeals) != 0) {
    return FileDescriptor(kNone);
  }
  return file;
}

bool isTooLarge(int error) {
  return error == EMSGSIZE || error == ENOBUFS;
}

/// The journal that the socket was connected to is there no more.
bool isForsaken(int error) {
  return error == ENOTCONN || error == ECONNREFUSED || error == ECONNRESET || error == EPIPE;
}

}  // namespace

JournalSocket::JournalSocket(std::string_view fields, std::string path)
    : path_(std::move(path)), head_(std::string(fields) + "MESSAGE\n"), socket_(socketTo(path_)) {
  if (socket_) {
    connect();
  }
}

bool JournalSocket::isThere(const std::string& path) {
  return ::access(path.c_str(), W_OK) == 0;
}

void JournalSocket::write(std::string_view message) noexcept {
  // A field whose value may hold line breaks is its name, the length of the value and the value,
  // each but the length with a line end.
  const std::uint64_t length = htole64(message.size());
  const std::string_view lengthBytes(reinterpret_cast<const char*>(&length), sizeof length);
  std::array<iovec, 4> parts{partOf(head_), partOf(lengthBytes), partOf(message), partOf("\n")};
  msghdr record{};
  record.msg_iov = parts.data();
  record.msg_iovlen = parts.size();
  if (!send(record) && isTooLarge(errno)) {
    sendAsFile(record);
  }
}

bool JournalSocket::connect() noexcept {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path_.copy(address.sun_path, sizeof address.sun_path - 1);
  return ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// False with the reason in errno.
bool JournalSocket::send(const msghdr& datagram) noexcept {
  bool connectedAnew = false;
  while (::sendmsg(socket_.get(), &datagram, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
    if (isForsaken(errno) && !connectedAnew) {
      connectedAnew = true;
      if (!connect()) {
        return false;
      }
    } else if (errno != EINTR && (errno != EAGAIN || !patience_.waitForRoom(socket_.get()))) {
      return false;
    }
  }
  patience_.renew();
  return true;
}

// A record that fits into no datagram travels as a file.
void JournalSocket::sendAsFile(const msghdr& record) noexcept {
  const FileDescriptor file = sealedFile(record);
  if (!file) {
    return;
  }
  const int descriptor = file.get();
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptor)> control{};
  msghdr datagram{};
  datagram.msg_control = control.data();
  datagram.msg_controllen = control.size();
  cmsghdr* const header = CMSG_FIRSTHDR(&datagram);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
  send(datagram);
}

}  // namespace vendril
