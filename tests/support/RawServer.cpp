#include "support/RawServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace vendril {
namespace {

constexpr int kBacklog = 1024;
constexpr int kClosed = -1;
constexpr std::string_view kEndOfHeaders = "\r\n\r\n";

/// A socket bound to a port of 127.0.0.1 that the system chose.
std::pair<int, int> boundSocketAndPort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket, generic, size) != 0 || getsockname(socket, generic, &size) != 0) {
    throw std::runtime_error("no port for a test server");
  }
  return {socket, ntohs(address.sin_port)};
}

std::string urlOfPort(int port, const std::string& path) {
  return "http://127.0.0.1:" + std::to_string(port) + path;
}

std::size_t contentLength(std::string_view headers) {
  constexpr std::string_view kName = "Content-Length: ";
  const std::size_t position = headers.find(kName);
  return position == std::string_view::npos
             ? 0
             : std::stoul(std::string(headers.substr(position + kName.size())));
}

}  // namespace

std::string RawServer::Connection::readRequest() {
  std::array<char, 4096> buffer{};
  for (;;) {
    const std::size_t headersEnd = unread_.find(kEndOfHeaders);
    if (headersEnd != std::string::npos) {
      const std::size_t size =
          headersEnd + kEndOfHeaders.size() + contentLength(unread_.substr(0, headersEnd + 2));
      if (unread_.size() >= size) {
        std::string request = unread_.substr(0, size);
        unread_.erase(0, size);
        return request;
      }
    }
    const ssize_t count = recv(socket_, buffer.data(), buffer.size(), 0);
    if (count <= 0) {
      return {};
    }
    unread_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

bool RawServer::Connection::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void RawServer::Connection::waitForClose() const {
  std::array<char, 4096> buffer{};
  while (recv(socket_, buffer.data(), buffer.size(), 0) > 0) {
  }
}

void RawServer::Connection::resetOnClose() const {
  const linger atOnce{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

void RawServer::resetAfterAccept(Connection& connection) {
  connection.resetOnClose();
}

void RawServer::answerGarbage(Connection& connection) {
  connection.readRequest();
  connection.write("\x01\x02 this is not HTTP\r\n\r\n");
}

void RawServer::neverAnswer(Connection& connection) {
  connection.waitForClose();
}

void RawServer::answerWithoutEnd(Connection& connection) {
  connection.readRequest();
  connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
  while (connection.write(std::string(65536, 'x'))) {
  }
}

void RawServer::answerChunksWithoutEnd(Connection& connection) {
  connection.readRequest();
  connection.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
  while (connection.write("10000\r\n" + std::string(65536, 'x') + "\r\n")) {
  }
}

void RawServer::answerHeadersWithoutEnd(Connection& connection) {
  connection.readRequest();
  connection.write("HTTP/1.1 200 OK\r\n");
  while (connection.write("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
  }
}

void RawServer::answerAndClose(Connection& connection) {
  connection.readRequest();
  connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
}

RawServer::RawServer(Script script) : script_(std::move(script)) {
  std::tie(socket_, port_) = boundSocketAndPort();
  listen(socket_, kBacklog);
  acceptor_ = std::thread([this] { acceptConnections(); });
}

RawServer::~RawServer() {
  shutdown(socket_, SHUT_RDWR);
  acceptor_.join();
  close(socket_);
  {
    const std::lock_guard lock(mutex_);
    for (const Worker& worker : workers_) {
      shutdown(worker.socket, SHUT_RDWR);
    }
  }
  for (Worker& worker : workers_) {
    worker.thread.join();
  }
}

std::string RawServer::url(const std::string& path) const {
  return urlOfPort(port_, path);
}

std::size_t RawServer::accepts() const {
  const std::lock_guard lock(mutex_);
  return workers_.size();
}

bool RawServer::waitForAccepts(std::size_t count, std::chrono::milliseconds deadline) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, deadline, [&] { return workers_.size() >= count; });
}

void RawServer::acceptConnections() {
  for (;;) {
    const int socket = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
      return;
    }
    const std::lock_guard lock(mutex_);
    Worker& worker = workers_.emplace_back(Worker{socket, {}});
    worker.thread = std::thread([this, &worker] { serve(worker); });
    changed_.notify_all();
  }
}

void RawServer::serve(Worker& worker) {
  int socket = -1;
  {
    const std::lock_guard lock(mutex_);
    socket = worker.socket;
  }
  Connection connection(socket);
  script_(connection);
  const std::lock_guard lock(mutex_);
  close(std::exchange(worker.socket, kClosed));
}

ClosedPort::ClosedPort() {
  std::tie(socket_, port_) = boundSocketAndPort();
}

ClosedPort::~ClosedPort() {
  close(socket_);
}

std::string ClosedPort::url() const {
  return urlOfPort(port_, "/");
}

}  // namespace vendril
