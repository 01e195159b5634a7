#include "support/TestPortal.h"

#include <glib.h>
#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <limits>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "support/TestCertificate.h"

namespace vendril {
namespace {

constexpr const char* kAddress = "127.0.0.1";
/// Enough for every client of a test to connect at the same moment.
constexpr int kBacklog = 1024;
constexpr time_t kKeepAliveSeconds = 5;

/// A thread for each connection, so that many requests can be left waiting at once.
class ThreadPerConnection : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> task) override { threads_.emplace_back(std::move(task)); }
  void shutdown() override { threads_.clear(); }

 private:
  std::vector<std::jthread> threads_;
};

/// Undoes the escapes of a form: "%" with two hexadecimal digits, and "+" for a space.
std::string decodedFormText(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    } else {
      result += text[i] == '+' ? ' ' : text[i];
    }
  }
  return result;
}

std::map<std::string, std::string> decodedForm(std::string_view body) {
  std::map<std::string, std::string> fields;
  while (!body.empty()) {
    const std::string_view pair = body.substr(0, body.find('&'));
    body.remove_prefix(std::min(pair.size() + 1, body.size()));
    const std::string_view key = pair.substr(0, pair.find('='));
    const std::string_view value = pair.substr(std::min(key.size() + 1, pair.size()));
    fields.emplace(decodedFormText(key), decodedFormText(value));
  }
  return fields;
}

/// The local port of a connected IPv4 socket; 0 for any other descriptor.
int portOfConnection(int descriptor) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (getpeername(descriptor, generic, &size) != 0) {
    return 0;
  }
  size = sizeof address;
  getsockname(descriptor, generic, &size);
  return ntohs(address.sin_port);
}

/// httplib waits for clients that keep their connections open and has no way to turn them out.
void breakOffConnectionsTo(int port) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int descriptor = std::stoi(entry.path().filename().string());
    if (portOfConnection(descriptor) == port) {
      ::shutdown(descriptor, SHUT_RDWR);
    }
  }
}

std::unique_ptr<httplib::Server> makeServer(const TestCertificate* certificate) {
  if (certificate == nullptr) {
    return std::make_unique<httplib::Server>();
  }
  return std::make_unique<httplib::SSLServer>(certificate->certificateFile().c_str(),
                                              certificate->keyFile().c_str());
}

}  // namespace

/// The httplib server, its thread, and what both share with the test.
class TestPortal::Server {
 public:
  explicit Server(const TestCertificate* certificate) : http_(makeServer(certificate)) {
    prepare();
    port_ = http_->bind_to_any_port(kAddress);
    if (port_ <= 0 || ::listen(socket_, kBacklog) != 0) {
      throw std::runtime_error("the portal cannot listen");
    }
    thread_ = std::jthread([this] { http_->listen_after_bind(); });
    while (!http_->is_running()) {
      std::this_thread::yield();
    }
    static std::once_flag asked;
    std::call_once(asked, [&] { askOnce(certificate != nullptr); });
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  ~Server() {
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    changed_.notify_all();
    http_->stop();
    breakOffConnectionsTo(port_);
  }

  int port() const { return port_; }

  void answerWith(Answer answer) {
    const std::lock_guard lock(mutex_);
    usual_ = std::move(answer);
  }

  void answerNextWith(Answer answer) {
    const std::lock_guard lock(mutex_);
    next_.push_back(std::move(answer));
  }

  std::vector<Request> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  bool waitForRequests(std::size_t count, std::chrono::milliseconds deadline) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, deadline, [&] { return requests_.size() >= count; });
  }

 private:
  /// With its first request httplib fills tables that it reads with every later one. That is safe,
  /// but ThreadSanitizer cannot see why, httplib not being compiled for it. So the first request
  /// comes before there are any two at once; it is not recorded.
  void askOnce(bool isTls) const {
    httplib::Client client((isTls ? "https://" : "http://") + std::string(kAddress) + ":" +
                           std::to_string(port_));
    client.enable_server_certificate_verification(false);
    client.Options("/");
  }

  void prepare() {
    http_->new_task_queue = [] { return new ThreadPerConnection; };
    http_->set_keep_alive_timeout(kKeepAliveSeconds);
    http_->set_keep_alive_max_count(std::numeric_limits<std::size_t>::max());
    http_->set_tcp_nodelay(true);
    http_->set_socket_options([this](socket_t socket) { socket_ = socket; });
    // A content reader, because httplib refuses larger forms than 8 KiB without one.
    http_->Post(".*", [this](const httplib::Request& request, httplib::Response& response,
                             const httplib::ContentReader& read) {
      std::string body;
      read([&body](const char* data, std::size_t size) {
        body.append(data, size);
        return true;
      });
      handle(request, std::move(body), response);
    });
    http_->Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
      handle(request, {}, response);
    });
  }

  void handle(const httplib::Request& request, std::string body, httplib::Response& response) {
    const Answer answer = answerTo({request.method,
                                    request.path,
                                    {request.headers.begin(), request.headers.end()},
                                    std::move(body),
                                    {},
                                    request.remote_port});
    response.status = answer.status;
    response.set_content(answer.body, answer.contentType);
    for (const auto& [name, value] : answer.headers) {
      response.set_header(name, value);
    }
  }

  /// Records the request and waits until its answer is due.
  Answer answerTo(Request request) {
    request.formFields = decodedForm(request.body);
    std::unique_lock lock(mutex_);
    requests_.push_back(std::move(request));
    Answer answer = usual_;
    if (!next_.empty()) {
      answer = std::move(next_.front());
      next_.pop_front();
    }
    changed_.notify_all();
    changed_.wait_for(lock, answer.delay, [this] { return stopping_; });
    return answer;
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<Request> requests_;
  Answer usual_;
  std::deque<Answer> next_;
  bool stopping_ = false;

  std::unique_ptr<httplib::Server> http_;
  socket_t socket_ = -1;
  int port_ = 0;
  std::jthread thread_;
};

std::optional<std::string> TestPortal::Request::header(const std::string& name) const {
  for (const auto& [key, value] : headers) {
    if (g_ascii_strcasecmp(key.c_str(), name.c_str()) == 0) {
      return value;
    }
  }
  return std::nullopt;
}

TestPortal::TestPortal()
    : server_(std::make_unique<Server>(nullptr)), scheme_("http"), port_(server_->port()) {}

TestPortal::TestPortal(const TestCertificate& certificate)
    : server_(std::make_unique<Server>(&certificate)), scheme_("https"), port_(server_->port()) {}

TestPortal::~TestPortal() = default;

std::string TestPortal::url(const std::string& path) const {
  return scheme_ + "://" + kAddress + ":" + std::to_string(port_) + path;
}

void TestPortal::answerWith(Answer answer) {
  server_->answerWith(std::move(answer));
}

void TestPortal::answerNextWith(Answer answer) {
  server_->answerNextWith(std::move(answer));
}

std::vector<TestPortal::Request> TestPortal::requests() const {
  return server_->requests();
}

bool TestPortal::waitForRequests(std::size_t count, std::chrono::milliseconds deadline) const {
  return server_->waitForRequests(count, deadline);
}

std::size_t TestPortal::connections() const {
  std::set<int> ports;
  for (const Request& request : requests()) {
    ports.insert(request.connection);
  }
  return ports.size();
}

}  // namespace vendril
