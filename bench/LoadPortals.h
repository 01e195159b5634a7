#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "bench/Descriptor.h"

namespace vendril::bench {

/// How a portal treats its requests.
enum class PortalKind {
  fast,      ///< answers 200 at once
  slow,      ///< answers 200 after a quarter of a second
  failing,   ///< answers 500
  breaking,  ///< takes the request and resets the connection
  closed,    ///< nothing listens
  silent,    ///< takes the request and never answers
};

inline constexpr std::size_t kPortalKinds = 6;

/// Loopback portals of every kind, all on one thread, so that they take little from the agent whose
/// load they carry. They count the requests of each session. Connections are kept open but where a
/// kind says otherwise.
class LoadPortals {
 public:
  /// Sessions are numbered from 0 to `sessions` - 1. Throws std::system_error when a port cannot be
  /// had.
  explicit LoadPortals(std::size_t sessions);
  LoadPortals(const LoadPortals&) = delete;
  LoadPortals& operator=(const LoadPortals&) = delete;
  ~LoadPortals();

  /// The address of a portal for one session. There are several silent portals, which take turns.
  std::string addressFor(PortalKind kind, std::size_t session);

  /// How many requests of a session have arrived, at any portal.
  int arrivals(std::size_t session) const { return arrivals_[session].load(); }

 private:
  using Clock = std::chrono::steady_clock;

  struct Listener {
    PortalKind kind = PortalKind::fast;
    Descriptor socket;
    int port = 0;
  };
  struct Connection {
    PortalKind kind = PortalKind::fast;
    Descriptor socket;
    std::string received;
  };
  struct DelayedAnswer {
    Clock::time_point due;
    std::uint64_t connection;
  };

  void openPorts();
  void watch(int descriptor, std::uint64_t identifier) const;
  void run();
  int millisecondsUntilAnswer() const;
  void handle(std::uint64_t identifier);
  void accept(const Listener& listener);
  void receive(std::uint64_t identifier);
  void take(std::uint64_t identifier, Connection& connection);
  void giveDueAnswers();

  std::vector<Listener> listeners_;
  std::size_t silentTurn_ = 0;
  std::vector<std::atomic<std::uint8_t>> arrivals_;
  Descriptor epoll_;
  Descriptor wakeUp_;
  /// Identifiers are never used again, unlike descriptors: an answer may be due to a connection
  /// that is gone.
  std::unordered_map<std::uint64_t, Connection> connections_;
  std::uint64_t nextIdentifier_ = 0;
  std::deque<DelayedAnswer> delayed_;
  std::thread thread_;
};

}  // namespace vendril::bench
