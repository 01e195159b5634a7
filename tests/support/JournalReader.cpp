#include "support/JournalReader.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace vendril {
namespace {

constexpr std::size_t kLargestDatagram = 256 * 1024;

UniqueFd listenAt(const std::string& path) {
  UniqueFd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  return socket;
}

std::string contentsOf(const UniqueFd& file) {
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
  if (::fcntl(file.get(), F_GET_SEALS) != kSeals) {
    return "a file that is not sealed";
  }
  struct stat status {};
  ::fstat(file.get(), &status);
  std::string contents(static_cast<std::size_t>(status.st_size), '\0');
  const ssize_t count = ::pread(file.get(), contents.data(), contents.size(), 0);
  contents.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return contents;
}

/// The file that came with a datagram; none when none did.
UniqueFd fileWith(msghdr& datagram) {
  const cmsghdr* const header = CMSG_FIRSTHDR(&datagram);
  int descriptor = -1;
  if (header != nullptr && header->cmsg_type == SCM_RIGHTS) {
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
  }
  return UniqueFd(descriptor);
}

}  // namespace

JournalReader::JournalReader(std::string path) : path_(std::move(path)), socket_(listenAt(path_)) {}

JournalReader::~JournalReader() {
  ::unlink(path_.c_str());
}

std::optional<std::string> JournalReader::read() {
  std::string bytes(kLargestDatagram, '\0');
  iovec part{bytes.data(), bytes.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr datagram{};
  datagram.msg_iov = &part;
  datagram.msg_iovlen = 1;
  datagram.msg_control = control.data();
  datagram.msg_controllen = control.size();
  const ssize_t count = ::recvmsg(socket_.get(), &datagram, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (count < 0) {
    return std::nullopt;
  }
  const UniqueFd file = fileWith(datagram);
  bytes.resize(static_cast<std::size_t>(count));
  return file ? contentsOf(file) : bytes;
}

std::size_t JournalReader::readAll() {
  std::size_t count = 0;
  while (read()) {
    ++count;
  }
  return count;
}

}  // namespace vendril
