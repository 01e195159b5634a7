#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vendril {

struct TestCertificate;

/// An HTTP server on 127.0.0.1 that keeps what it is asked and answers as it is told; without
/// instructions with 200 and an empty body, at once. Every operation may be called from any thread.
class TestPortal {
 public:
  struct Request {
    std::string method;
    /// The target of the request line, without its query: an absolute URL when asked as a proxy.
    std::string path;
    /// Keyed by the names as they were sent.
    std::multimap<std::string, std::string> headers;
    std::string body;
    /// The pairs of a form-urlencoded body, decoded. "+" is a space, as forms have it.
    std::map<std::string, std::string> formFields;
    /// The client's port: the same for all requests that share a connection.
    int connection = 0;

    /// The first header of this name, whose case does not matter; nothing when there is none.
    std::optional<std::string> header(const std::string& name) const;
  };

  struct Answer {
    int status = 200;
    std::string body{};
    std::string contentType = "text/plain";
    std::multimap<std::string, std::string> headers{};
    /// How long the request is left waiting.
    std::chrono::milliseconds delay{0};
  };

  /// How long a test waits for something that should happen soon, the sanitizers' slowness
  /// included.
  static constexpr std::chrono::seconds kDeadline{20};

  /// Listens on a port of the system's choice when it returns.
  TestPortal();
  /// The same over TLS.
  explicit TestPortal(const TestCertificate& certificate);
  TestPortal(const TestPortal&) = delete;
  TestPortal& operator=(const TestPortal&) = delete;
  /// Ends delays, breaks off connections and returns when the server has ended.
  ~TestPortal();

  int port() const { return port_; }
  /// The URL of a path of this portal.
  std::string url(const std::string& path = "/") const;

  /// Answers every request from now on with `answer`, those apart that have an answer of their own.
  void answerWith(Answer answer);
  /// Answers the next request that has no answer of its own yet with `answer`.
  void answerNextWith(Answer answer);

  /// The requests so far, in the order of their arrival. A request counts before it is answered.
  std::vector<Request> requests() const;
  /// Waits until `count` requests have arrived in all; false when they have not by the deadline.
  bool waitForRequests(std::size_t count, std::chrono::milliseconds deadline = kDeadline) const;
  /// The number of connections over which the requests came.
  std::size_t connections() const;

 private:
  class Server;

  std::unique_ptr<Server> server_;
  std::string scheme_;
  int port_ = 0;
};

}  // namespace vendril
