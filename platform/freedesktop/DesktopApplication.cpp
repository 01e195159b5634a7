#include "platform/freedesktop/DesktopApplication.h"

#include <glib-unix.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "platform/Url.h"
#include "platform/freedesktop/BusEndpoint.h"
#include "platform/freedesktop/BusHandover.h"

namespace vendril {
namespace {

using std::chrono::steady_clock;

/// How long a second process waits for the first to handle its links, all attempts together.
constexpr std::chrono::seconds kHandoverLimit{5};

/// How long the links that have arrived before the end may take to be handled.
constexpr std::chrono::seconds kLastLinksLimit{5};

gboolean onSignal(gpointer application) {
  static_cast<Application*>(application)->terminate();
  return G_SOURCE_CONTINUE;
}

}  // namespace

DesktopApplication::DesktopApplication(SystemLog& log, DesktopUrlEvents& events,
                                       std::string busName, Schemes schemes)
    : log_(log),
      events_(events),
      busName_(std::move(busName)),
      schemes_(std::move(schemes)),
      loop_(g_main_loop_new(nullptr, FALSE)),
      termination_(g_cancellable_new()) {}

int DesktopApplication::main(int argc, char** argv, ApplicationDelegate& delegate) {
  std::signal(SIGPIPE, SIG_IGN);
  // Threads that GLib keeps for later work would wake up once more to find that there is none.
  g_thread_pool_set_max_unused_threads(0);
  const std::vector<std::string> links = linksAmong(argc, argv);
  const std::unique_ptr<SessionBus> bus = SessionBus::connect(log_, [this] { terminate(); });
  std::optional<BusEndpoint> endpoint;
  if (bus) {
    // The object has to be there when the name is: callers come as soon as the bus knows the name.
    // Their calls wait until the main loop runs.
    endpoint.emplace(bus->connection(), applicationObjectPath(busName_), events_);
    const Role role = findRole(*bus, links);
    if (role != Role::first) {
      return role == Role::handedOver ? 0 : 1;
    }
  }
  watchSignals();
  const bool launched = tryLaunch(delegate, links);
  if (launched) {
    run();
  }
  if (bus) {
    leave(*bus);
  }
  delegate.applicationWillTerminate();
  return launched ? 0 : 1;
}

void DesktopApplication::terminate() {
  g_cancellable_cancel(termination_.get());
  g_main_loop_quit(loop_.get());
}

std::vector<std::string> DesktopApplication::linksAmong(int argc, char** argv) const {
  std::vector<std::string> links;
  if (argc < 2) {
    return links;
  }
  const std::set<std::string> schemes = schemes_();
  std::copy_if(argv + 1, argv + argc, std::back_inserter(links), [&](const char* argument) {
    return std::any_of(schemes.begin(), schemes.end(), [argument](const std::string& scheme) {
      return hasScheme(argument, scheme);
    });
  });
  return links;
}

// The process that gets the name is the first one, and so is one whose bus fails. The owner of the
// name may end while links are handed to it; then the name is free again. Each step gets what the
// ones before have left of the time.
DesktopApplication::Role DesktopApplication::findRole(SessionBus& bus,
                                                      const std::vector<std::string>& links) const {
  const auto end = steady_clock::now() + kHandoverLimit;
  const auto left = [end] {
    const auto time = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
    return std::max(time, std::chrono::milliseconds(1));
  };
  while (bus.requestName(busName_, left()) == SessionBus::NameRequest::taken) {
    const Handover handover = handOver(bus.connection(), busName_, links, left());
    if (handover == Handover::done) {
      return Role::handedOver;
    }
    if (handover == Handover::busGone) {
      return Role::first;
    }
    if (handover == Handover::unanswered || steady_clock::now() >= end) {
      log_.write("The running process does not answer");
      return Role::unanswered;
    }
  }
  return Role::first;
}

void DesktopApplication::watchSignals() {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    signals_.emplace_back(g_unix_signal_add(number, onSignal, static_cast<Application*>(this)));
  }
}

// A delegate that cannot be launched takes no links. Its process gives the name back, so that the
// next link starts another one.
bool DesktopApplication::tryLaunch(ApplicationDelegate& delegate,
                                   const std::vector<std::string>& links) {
  try {
    launch(delegate, links);
    return true;
  } catch (const std::exception& exception) {
    log_.write("The application could not be launched:");
    log_.write(exception.what());
  } catch (...) {
    log_.write("The application could not be launched");
  }
  return false;
}

// The intake holds a single link until the launch is complete, so only the first may come earlier.
void DesktopApplication::launch(ApplicationDelegate& delegate,
                                const std::vector<std::string>& links) {
  if (!links.empty()) {
    events_.announce();
  }
  delegate.applicationWillFinishLaunching();
  auto link = links.begin();
  if (link != links.end()) {
    events_.deliver(*link++);
  }
  delegate.applicationDidFinishLaunching();
  std::for_each(link, links.end(), [this](const std::string& later) { events_.deliver(later); });
}

void DesktopApplication::run() {
  if (g_cancellable_is_cancelled(termination_.get()) == FALSE) {
    g_main_loop_run(loop_.get());
  }
}

// Once the name is given back, a new link starts a new process, and every link that was sent before
// has arrived and is handled here.
void DesktopApplication::leave(SessionBus& bus) const {
  bus.releaseName(busName_);
  const auto end = steady_clock::now() + kLastLinksLimit;
  while (steady_clock::now() < end && g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  bus.flush();
}

}  // namespace vendril
