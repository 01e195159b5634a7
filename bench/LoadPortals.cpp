#include "bench/LoadPortals.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "bench/HttpRequest.h"

namespace vendril::bench {
namespace {

using namespace std::chrono_literals;

constexpr auto kSlowness = 250ms;

// The agent keeps 64 sockets at most for one portal, and these hold theirs for its limit of 60 s:
// with one silent portal alone, few of the sockets that the agent has in all would ever be in use.
constexpr std::size_t kSilentPortals = 4;

constexpr std::string_view kGoodAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";
constexpr std::string_view kBadAnswer =
    "HTTP/1.1 500 Internal Server Error\r\nContent-Length: 5\r\n\r\nsorry";
constexpr std::string_view kSession = "session_id=";

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

Descriptor bindToLoopback(int& port) {
  Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket.get(), generic, length) != 0 ||
      getsockname(socket.get(), generic, &length) != 0) {
    fail("no port of 127.0.0.1");
  }
  port = ntohs(address.sin_port);
  return socket;
}

void answer(const Descriptor& socket, std::string_view text) {
  send(socket.get(), text.data(), text.size(), MSG_NOSIGNAL);
}

// Without waiting for the other side, which sees its connection reset.
void resetWhenClosed(const Descriptor& socket) {
  const linger atOnce{1, 0};
  setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

}  // namespace

LoadPortals::LoadPortals(std::size_t sessions)
    : arrivals_(sessions),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  openPorts();
  nextIdentifier_ = listeners_.size();
  watch(wakeUp_.get(), nextIdentifier_++);
  thread_ = std::thread([this] { run(); });
}

LoadPortals::~LoadPortals() {
  eventfd_write(wakeUp_.get(), 1);
  thread_.join();
}

void LoadPortals::openPorts() {
  std::vector<PortalKind> kinds{PortalKind::fast, PortalKind::slow, PortalKind::failing,
                                PortalKind::breaking, PortalKind::closed};
  kinds.insert(kinds.end(), kSilentPortals, PortalKind::silent);
  for (const PortalKind kind : kinds) {
    Listener listener{kind, {}, 0};
    listener.socket = bindToLoopback(listener.port);
    // The port that is bound but not listened at is nobody else's and refuses every connection.
    if (kind != PortalKind::closed) {
      if (listen(listener.socket.get(), SOMAXCONN) != 0) {
        fail("cannot listen on 127.0.0.1");
      }
      watch(listener.socket.get(), listeners_.size());
    }
    listeners_.push_back(std::move(listener));
  }
}

void LoadPortals::watch(int descriptor, std::uint64_t identifier) const {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = identifier;
  if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
    fail("epoll_ctl");
  }
}

std::string LoadPortals::addressFor(PortalKind kind, std::size_t session) {
  auto index = static_cast<std::size_t>(kind);
  if (kind == PortalKind::silent) {
    index += silentTurn_++ % kSilentPortals;
  }
  return fmt::format("http://127.0.0.1:{}/meeting?{}{}", listeners_[index].port, kSession, session);
}

void LoadPortals::run() {
  const std::uint64_t wakeUp = listeners_.size();
  std::array<epoll_event, 64> events{};
  while (true) {
    const int count = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()),
                                 millisecondsUntilAnswer());
    for (int index = 0; index < count; ++index) {
      const std::uint64_t identifier = events.at(static_cast<std::size_t>(index)).data.u64;
      if (identifier == wakeUp) {
        return;
      }
      handle(identifier);
    }
    giveDueAnswers();
  }
}

int LoadPortals::millisecondsUntilAnswer() const {
  if (delayed_.empty()) {
    return -1;
  }
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(delayed_.front().due - Clock::now());
  return static_cast<int>(std::max(left, 0ms).count());
}

void LoadPortals::handle(std::uint64_t identifier) {
  if (identifier < listeners_.size()) {
    accept(listeners_[identifier]);
  } else {
    receive(identifier);
  }
}

void LoadPortals::accept(const Listener& listener) {
  Descriptor accepted(
      accept4(listener.socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (accepted.get() >= 0) {
    watch(accepted.get(), nextIdentifier_);
    connections_[nextIdentifier_++] = {listener.kind, std::move(accepted), {}};
  }
}

void LoadPortals::receive(std::uint64_t identifier) {
  const auto entry = connections_.find(identifier);
  if (entry == connections_.end()) {
    return;
  }
  Connection& connection = entry->second;
  std::array<char, 16384> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const ssize_t count = recv(connection.socket.get(), buffer.data(), buffer.size(), 0);
  if (count <= 0) {
    connections_.erase(entry);
    return;
  }
  connection.received.append(buffer.data(), static_cast<std::size_t>(count));
  if (isWholeRequest(connection.received)) {
    take(identifier, connection);
  }
}

void LoadPortals::take(std::uint64_t identifier, Connection& connection) {
  const std::size_t name = connection.received.find(kSession);
  if (name != std::string::npos) {
    const std::size_t session =
        std::strtoul(connection.received.c_str() + name + kSession.size(), nullptr, 10);
    ++arrivals_.at(session);
  }
  connection.received.clear();
  switch (connection.kind) {
    case PortalKind::fast:
      return answer(connection.socket, kGoodAnswer);
    case PortalKind::slow:
      delayed_.push_back({Clock::now() + kSlowness, identifier});
      return;
    case PortalKind::failing:
      return answer(connection.socket, kBadAnswer);
    case PortalKind::breaking:
      resetWhenClosed(connection.socket);
      connections_.erase(identifier);
      return;
    case PortalKind::closed:
    case PortalKind::silent:
      return;
  }
}

void LoadPortals::giveDueAnswers() {
  while (!delayed_.empty() && delayed_.front().due <= Clock::now()) {
    if (const auto entry = connections_.find(delayed_.front().connection);
        entry != connections_.end()) {
      answer(entry->second.socket, kGoodAnswer);
    }
    delayed_.pop_front();
  }
}

}  // namespace vendril::bench
