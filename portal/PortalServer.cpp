#include "portal/PortalServer.h"

#include <charconv>
#include <optional>
#include <thread>
#include <utility>

#include "portal/Connections.h"
#include "portal/PageFiles.h"
#include "portal/RequestGuard.h"

namespace vendril::portal {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kPlainText = "text/plain; charset=utf-8";
constexpr int kForbidden = 403;
constexpr int kBadRequest = 400;
constexpr int kTooLarge = 413;
constexpr int kUnavailable = 503;
constexpr int kSuccess = 200;
constexpr int kNoContent = 204;
constexpr int kNotModified = 304;

/// A thread for each event stream, and as many for slow answers and connections that are kept open.
constexpr std::size_t kThreads = 64;

/// How often a silent stream is tried, which is how a client that has gone is noticed.
constexpr std::chrono::seconds kHeartbeat{2};

/// The page needs nothing but its own files, and a report has no way to bring anything else in.
const httplib::Headers kHeaders{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
     "require-trusted-types-for 'script'; trusted-types 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"}};

/// The library's own choice, SO_REUSEPORT, would let two portals share a port without a word.
void takePortAlone(socket_t socket) {
  const int yes = 1;
  ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

/// The body, as far as it is not too large; nothing when it is, or when it breaks off.
std::optional<std::string> readBody(const httplib::ContentReader& read) {
  std::string body;
  const bool whole = read([&body](const char* data, std::size_t length) {
    body.append(data, length);
    return body.size() <= PortalServer::kLargestBody;
  });
  return whole ? std::optional(std::move(body)) : std::nullopt;
}

std::optional<std::string> headerOf(const httplib::Request& request, const char* name) {
  return request.has_header(name) ? std::optional(request.get_header_value(name)) : std::nullopt;
}

/// The number of the last report that a client has seen.
std::uint64_t lastSeen(const httplib::Request& request) {
  const std::string text = request.get_header_value("Last-Event-ID");
  std::uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// The headers as they were sent, without those that the library adds about the connection.
Report reportOf(const httplib::Request& request, std::string body) {
  Report report;
  report.time = currentTime();
  report.method = request.method;
  report.target = request.target;
  for (const auto& [name, value] : request.headers) {
    if (!name.starts_with("REMOTE_") && !name.starts_with("LOCAL_")) {
      report.headers.emplace_back(name, value);
    }
  }
  report.body = std::move(body);
  return report;
}

}  // namespace

PortalServer::PortalServer(Settings settings, ReportBlock reportBlock)
    : settings_(std::move(settings)), reportBlock_(std::move(reportBlock)) {
  http_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
  http_.set_socket_options(takePortAlone);
  http_.set_tcp_nodelay(true);
  http_.set_default_headers(kHeaders);
  http_.set_payload_max_length(kLargestBody);
  http_.set_pre_routing_handler(
      [this](const auto& request, auto& response) { return guard(request, response); });
  addPage();
  http_.Get("/events",
            [this](const auto& request, auto& response) { streamReports(request, response); });
  // The body is read here rather than by the library, which takes forms of 8 KiB at most and mixes
  // their fields with those of the address.
  http_.Post(".*",
             [this](const httplib::Request& request, httplib::Response& response,
                    const httplib::ContentReader& read) { takeReport(request, response, read); });
}

void PortalServer::addPage() {
  for (const PageFile& file : kPageFiles) {
    http_.Get(std::string(file.path), [&file](const auto&, auto& response) {
      response.set_content(std::string(file.contents), std::string(file.contentType));
    });
  }
}

bool PortalServer::bind() {
  if (settings_.port != 0) {
    port_ = settings_.port;
    return http_.bind_to_port(kLoopback, port_);
  }
  port_ = http_.bind_to_any_port(kLoopback);
  return port_ > 0;
}

bool PortalServer::run() {
  const bool orderly = http_.listen_after_bind();
  ended_ = true;
  return orderly || log_.isClosed();
}

void PortalServer::stop() {
  log_.close();
  // The library passes over a request to stop that comes before it listens.
  while (!http_.is_running() && !ended_) {
    std::this_thread::yield();
  }
  http_.stop();
  breakOffConnections(port_);
}

PortalServer::Refusal PortalServer::guard(const httplib::Request& request,
                                          httplib::Response& response) const {
  const Provenance provenance{.host = request.get_header_value("Host"),
                              .origin = headerOf(request, "Origin"),
                              .fetchSite = request.get_header_value("Sec-Fetch-Site"),
                              .fetchMode = request.get_header_value("Sec-Fetch-Mode")};
  const std::optional<std::string> refusal = refusalOf(provenance, port_);
  if (!refusal) {
    return Refusal::Unhandled;
  }
  response.status = kForbidden;
  response.set_content(*refusal, kPlainText);
  return Refusal::Handled;
}

void PortalServer::takeReport(const httplib::Request& request, httplib::Response& response,
                              const httplib::ContentReader& read) {
  // Each report comes on a connection of its own, so that a reset is seen as one.
  response.set_header("Connection", "close");
  std::optional<std::string> body = readBody(read);
  if (!body) {
    response.status = kTooLarge;
    response.set_content("a report has 64 KiB at most\n", kPlainText);
    return;
  }
  const std::string name = request.get_param_value("answer");
  const std::optional<Answer> chosen = name.empty() ? settings_.answer : parseAnswer(name);
  Report report = reportOf(request, std::move(*body));
  report.answer = chosen ? describe(*chosen) : "status 400: there is no such answer";
  report.successful = chosen && chosen->kind != Answer::Kind::reset && chosen->status == kSuccess;
  reportBlock_(report);
  log_.add(std::move(report));
  if (chosen) {
    answer(request, response, *chosen);
  } else {
    response.status = kBadRequest;
    response.set_content("answer has to be redirect, slow, reset or a status from 200 to 599\n",
                         kPlainText);
  }
}

void PortalServer::answer(const httplib::Request& request, httplib::Response& response,
                          const Answer& answer) {
  if (answer.kind == Answer::Kind::reset) {
    resetConnection(port_, request.remote_port);
    return;
  }
  if (answer.kind == Answer::Kind::slow) {
    log_.waitForClose(settings_.slowness);
  }
  if (answer.kind == Answer::Kind::redirect) {
    response.set_redirect("/", answer.status);
  }
  response.status = answer.status;
  if (answer.status != kNoContent && answer.status != kNotModified) {
    response.set_content(settings_.text, kPlainText);
  }
}

void PortalServer::streamReports(const httplib::Request& request, httplib::Response& response) {
  const std::shared_ptr<void> place(nullptr, [this](void*) { --streams_; });
  if (++streams_ > kMostStreams) {
    response.status = kUnavailable;
    response.set_content("too many pages listen already\n", kPlainText);
    return;
  }
  response.set_chunked_content_provider(
      "text/event-stream",
      [this, place, last = lastSeen(request)](std::size_t, httplib::DataSink& sink) mutable {
        return sendNext(last, sink);
      });
}

bool PortalServer::sendNext(std::uint64_t& last, httplib::DataSink& sink) {
  const std::optional<ReportLog::Entry> entry = log_.next(last, kHeartbeat);
  if (log_.isClosed()) {
    sink.done();
    return true;
  }
  if (!entry) {
    constexpr std::string_view kSilence = ":\n\n";
    return sink.write(kSilence.data(), kSilence.size());
  }
  last = entry->number;
  const std::string event =
      "id: " + std::to_string(last) + "\nevent: report\ndata: " + *entry->json + "\n\n";
  return sink.write(event.data(), event.size());
}

std::string PortalServer::describe(const Answer& answer) const {
  if (answer.kind == Answer::Kind::reset) {
    return "connection reset";
  }
  const std::string status = "status " + std::to_string(answer.status);
  return answer.kind == Answer::Kind::slow
             ? status + " after " + std::to_string(settings_.slowness.count()) + " s"
             : status;
}

}  // namespace vendril::portal
