// An agent for tests of the application's life: it appends what happens to it to the file that
// TEST_AGENT_RECORD names, one line for each event. The intake of its delegate is like the real
// one: it starts when the launch is complete and holds one link until then.
//
// Some links make it do something: "t:quit" terminates it, "t:throw" throws. With
// TEST_AGENT_QUITS_AT_LAUNCH it terminates before the intake has started.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "platform/freedesktop/DesktopApplication.h"
#include "platform/freedesktop/DesktopUrlEvents.h"
#include "platform/freedesktop/JournalSystemLog.h"

namespace vendril {
namespace {

class Record {
 public:
  Record() : fd_(::open(std::getenv("TEST_AGENT_RECORD"), O_WRONLY | O_APPEND | O_CREAT, 0600)) {}
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  ~Record() { ::close(fd_); }

  void add(const std::string& line) const {
    const std::string text = line + "\n";
    if (::write(fd_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      throw std::runtime_error("the record cannot be written");
    }
  }

 private:
  int fd_;
};

class RecordingDelegate : public ApplicationDelegate {
 public:
  RecordingDelegate(Application& application, UrlEvents& events)
      : application_(application), events_(events) {}

  void applicationWillFinishLaunching() override {
    record_.add("will");
    events_.setEventHandler([this](const UrlEvent& event, UrlEvent&) { take(*event.directObject); },
                            UrlEvents::kInternetEventClass, UrlEvents::kGetUrlEventId);
  }

  void applicationDidFinishLaunching() override {
    record_.add("did");
    if (std::getenv("TEST_AGENT_QUITS_AT_LAUNCH") != nullptr) {
      application_.terminate();
      return;
    }
    running_ = true;
    if (buffered_) {
      handle(*buffered_);
    }
  }

  void applicationWillTerminate() override { record_.add("terminate"); }

 private:
  void take(const std::string& link) {
    if (running_) {
      handle(link);
    } else {
      record_.add("held " + link);
      buffered_ = link;
    }
  }

  void handle(const std::string& link) {
    record_.add("link " + link);
    if (link == "t:quit") {
      application_.terminate();
    } else if (link == "t:throw") {
      throw std::runtime_error("thrown on demand");
    }
  }

  Application& application_;
  UrlEvents& events_;
  Record record_;
  bool running_ = false;
  std::optional<std::string> buffered_;
};

}  // namespace
}  // namespace vendril

int main(int argc, char** argv) {
  vendril::JournalSystemLog log;
  vendril::DesktopUrlEvents events(log);
  vendril::DesktopApplication application(log, events, "com.example.testagent", [] {
    return std::set<std::string>{"t", "tt"};
  });
  vendril::RecordingDelegate delegate(application, events);
  return application.main(argc, argv, delegate);
}
