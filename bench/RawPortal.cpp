#include "bench/RawPortal.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "bench/HttpRequest.h"

namespace vendril::bench {
namespace {

constexpr std::string_view kAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

RawPortal::RawPortal() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (listener_ < 0 || bind(listener_, generic, length) != 0 || listen(listener_, SOMAXCONN) != 0 ||
      getsockname(listener_, generic, &length) != 0) {
    fail("cannot listen on 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
}

RawPortal::~RawPortal() {
  for (const Connection& connection : connections_) {
    close(connection.socket);
  }
  close(listener_);
}

void RawPortal::acceptConnection() {
  const int accepted = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  if (accepted < 0) {
    fail("cannot accept a connection");
  }
  connections_.push_back({accepted, {}, {}});
}

void RawPortal::closeConnection(std::size_t index) {
  close(connections_[index].socket);
  connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(index));
}

// False when the other side has closed the connection.
bool RawPortal::receive(Connection& connection) {
  std::array<char, 16384> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = recv(connection.socket, buffer.data(), buffer.size(), 0);
  if (count <= 0) {
    return false;
  }
  if (connection.received.empty()) {
    connection.firstByte = Clock::now();
  }
  connection.received.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

std::optional<RawPortal::Clock::time_point> RawPortal::waitForRequest(
    std::chrono::milliseconds timeout) {
  const Clock::time_point deadline = Clock::now() + timeout;
  while (Clock::now() < deadline) {
    std::vector<pollfd> polled{{listener_, POLLIN, 0}};
    for (const Connection& connection : connections_) {
      polled.push_back({connection.socket, POLLIN, 0});
    }
    if (poll(polled.data(), polled.size(), static_cast<int>(timeout.count())) <= 0) {
      continue;
    }
    for (std::size_t index = connections_.size(); index-- > 0;) {
      Connection& connection = connections_[index];
      if (polled[index + 1].revents == 0) {
        continue;
      }
      if (!receive(connection)) {
        closeConnection(index);
      } else if (isWholeRequest(connection.received)) {
        connection.received.clear();
        if (answers_) {
          send(connection.socket, kAnswer.data(), kAnswer.size(), MSG_NOSIGNAL);
        }
        return connection.firstByte;
      }
    }
    if (polled.front().revents != 0) {
      acceptConnection();
    }
  }
  return std::nullopt;
}

}  // namespace vendril::bench
