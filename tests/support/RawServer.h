#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace vendril {

/// A TCP server on 127.0.0.1 that runs a script on every connection, for servers that no proper
/// HTTP server can play.
class RawServer {
 public:
  /// One accepted connection; closed when its script returns.
  class Connection {
   public:
    explicit Connection(int socket) : socket_(socket) {}

    /// Reads one request with its body; empty when the client has gone.
    std::string readRequest();
    /// False when the client has gone.
    bool write(std::string_view bytes) const;
    /// Returns when the client has gone or the server ends.
    void waitForClose() const;
    /// Makes the close that follows a reset.
    void resetOnClose() const;

   private:
    int socket_;
    std::string unread_;
  };

  using Script = std::function<void(Connection& connection)>;

  /// Accepts and resets at once.
  static void resetAfterAccept(Connection& connection);
  /// Answers with something that is not HTTP.
  static void answerGarbage(Connection& connection);
  /// Takes requests and never answers.
  static void neverAnswer(Connection& connection);
  /// Answers with a body of unknown length that never ends.
  static void answerWithoutEnd(Connection& connection);
  /// The same in chunks.
  static void answerChunksWithoutEnd(Connection& connection);
  /// Answers with headers that never end.
  static void answerHeadersWithoutEnd(Connection& connection);
  /// Answers with 200 and closes, without a word about closing.
  static void answerAndClose(Connection& connection);

  explicit RawServer(Script script);
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;
  /// Breaks every connection off and returns when all scripts have ended.
  ~RawServer();

  int port() const { return port_; }
  std::string url(const std::string& path = "/") const;

  /// The number of connections so far.
  std::size_t accepts() const;
  /// Waits until there have been `count`; false when there have not by the deadline.
  bool waitForAccepts(std::size_t count,
                      std::chrono::milliseconds deadline = std::chrono::seconds(20)) const;

 private:
  struct Worker {
    int socket;
    std::thread thread;
  };

  void acceptConnections();
  void serve(Worker& worker);

  Script script_;
  int socket_ = -1;
  int port_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::list<Worker> workers_;
  std::thread acceptor_;
};

/// A port of 127.0.0.1 that refuses connections and that nobody else gets.
class ClosedPort {
 public:
  ClosedPort();
  ClosedPort(const ClosedPort&) = delete;
  ClosedPort& operator=(const ClosedPort&) = delete;
  ~ClosedPort();

  std::string url() const;

 private:
  int socket_ = -1;
  int port_ = 0;
};

}  // namespace vendril
