#pragma once

#include <poll.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace vendril::bench {

/// A loopback HTTP server on bare sockets that tells when a request arrives. Connections are kept
/// open. Not thread-safe; works only while `waitForRequest` runs.
class RawPortal {
 public:
  using Clock = std::chrono::steady_clock;

  /// Throws std::system_error when it cannot listen.
  RawPortal();
  ~RawPortal();
  RawPortal(const RawPortal&) = delete;
  RawPortal& operator=(const RawPortal&) = delete;

  int port() const { return port_; }

  /// From now on requests are read and never answered.
  void stopAnswering() { answers_ = false; }

  /// Waits for one request, reads it whole and answers it. Returns the moment at which its first
  /// bytes were there; nothing when no request came in time.
  std::optional<Clock::time_point> waitForRequest(std::chrono::milliseconds timeout);

 private:
  struct Connection {
    int socket;
    std::string received;
    Clock::time_point firstByte;
  };

  void acceptConnection();
  bool receive(Connection& connection);
  void closeConnection(std::size_t index);

  int listener_ = -1;
  int port_ = 0;
  bool answers_ = true;
  std::vector<Connection> connections_;
};

}  // namespace vendril::bench
