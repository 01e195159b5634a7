#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "portal/Answer.h"
#include "portal/Report.h"
#include "portal/ReportLog.h"

namespace vendril::portal {

/// An HTTP server on 127.0.0.1 alone. Every POST is a report; the page at "/" shows them as they
/// arrive, and "/events" is the stream that the page listens to. The parameter "answer" of a
/// report's address chooses the answer.
class PortalServer {
 public:
  /// Called for each report when it arrives, on any of the server's threads.
  using ReportBlock = std::function<void(const Report& report)>;

  struct Settings {
    /// 0 takes any free port.
    int port = 0;
    /// For reports whose address chooses none.
    Answer answer;
    /// The body of an answer with a status.
    std::string text = "thank you\n";
    /// How late a slow answer is. It counts as a success, so it has to come before the agent gives
    /// up, which is after a minute.
    std::chrono::seconds slowness{10};
  };

  /// A larger body is refused.
  static constexpr std::size_t kLargestBody = std::size_t{64} << 10U;
  /// So many event streams may be open at once; each keeps a thread.
  static constexpr int kMostStreams = 16;

  PortalServer(Settings settings, ReportBlock reportBlock);
  PortalServer(const PortalServer&) = delete;
  PortalServer& operator=(const PortalServer&) = delete;

  /// Takes the port; from here on clients can connect. False when the port cannot be had.
  bool bind();
  int port() const { return port_; }

  /// Serves until `stop`; false when it ends for another reason.
  bool run();
  /// Ends `run`, and with it every connection and delay; waits for `run` to begin. From any thread,
  /// once.
  void stop();

 private:
  using Refusal = httplib::Server::HandlerResponse;

  void addPage();
  Refusal guard(const httplib::Request& request, httplib::Response& response) const;
  void takeReport(const httplib::Request& request, httplib::Response& response,
                  const httplib::ContentReader& read);
  void answer(const httplib::Request& request, httplib::Response& response, const Answer& answer);
  void streamReports(const httplib::Request& request, httplib::Response& response);
  bool sendNext(std::uint64_t& last, httplib::DataSink& sink);
  std::string describe(const Answer& answer) const;

  Settings settings_;
  ReportBlock reportBlock_;
  ReportLog log_;
  std::atomic<int> streams_ = 0;
  std::atomic<bool> ended_ = false;
  int port_ = 0;
  httplib::Server http_;
};

}  // namespace vendril::portal
