// The real rooms on real services, of which one has an operation that fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/ZQN5VendrilAppDelegate.h"
#include "support/DesktopFiles.h"
#include "support/ForwardingAlert.h"
#include "support/ForwardingApplication.h"
#include "support/ForwardingBundle.h"
#include "support/ForwardingLaunchServices.h"
#include "support/ForwardingOperationQueue.h"
#include "support/ForwardingProcessInfo.h"
#include "support/ForwardingPropertyListFiles.h"
#include "support/ForwardingSessionLoginItems.h"
#include "support/ForwardingSystemLog.h"
#include "support/ForwardingUrlConnection.h"
#include "support/ForwardingUrlEvents.h"
#include "support/ForwardingUserDefaults.h"
#include "support/ForwardingUserDirectories.h"
#include "support/ForwardingUuidGenerator.h"
#include "support/FreshProtocolHandler.h"
#include "support/MainLoop.h"
#include "support/PrivateHome.h"
#include "support/RealHost.h"
#include "support/TestPortal.h"

namespace vendril {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kDesktopId = "com.brelto.vendril";
constexpr const char* kMimeTypes = "MimeType=x-scheme-handler/vendril;x-scheme-handler/mervale;\n";
constexpr const char* kSent = "has been successfully sent with HTTP status code: 200";
/// What the built-in default reports as the client's version.
constexpr const char* kDefaultVersion = "3.21.0";

class ServiceFaults : public testing::Test {
 protected:
  ServiceFaults() {
    files_.application(kDesktopId, kMimeTypes);
    host_.fakeBundle.path = files_.program("bin/vendril");
    const PropertyList::Dictionary record{{"AppName", "Brelto Orvanta 4.0"},
                                          {"AppVersion", "4.0.1"},
                                          {"LogDirectory", (home_.root() / "logs").string()}};
    std::filesystem::create_directories(preferences_);
    EXPECT_TRUE(host_.realPropertyListFiles.writeDictionary(
        {{"PublishedConfiguration", record}}, preferences_ / "group.com.brelto.orvanta.plist"));
  }

  /// What runs on workers is over before its surroundings go.
  ~ServiceFaults() override { host_.realUrlConnection.reset(); }

  /// Launches the delegate as the application would.
  void launch() {
    handler_.emplace();
    delegate_->applicationWillFinishLaunching();
    delegate_->applicationDidFinishLaunching();
  }

  /// Opens a link as the desktop would.
  void open(const std::string& session) {
    host_.realUrlEvents.deliver("vendril://join?portalURI=" + portal_.url("/report") +
                                "?session_id=" + session);
  }

  /// Opens a link that the portal gets to see; true when its outcome is logged.
  bool openedLinkSucceeds() {
    const std::size_t before = countOf(kSent);
    open("good");
    return runMainLoopUntil([&] { return countOf(kSent) > before; });
  }

  void launchAndOpenWorks() {
    launch();
    EXPECT_TRUE(openedLinkSucceeds()) << testing::PrintToString(log());
  }

  std::vector<std::string> log() const { return host_.fakeSystemLog.messages(); }

  std::size_t countOf(std::string_view text) const {
    const std::vector<std::string> messages = log();
    return static_cast<std::size_t>(std::count_if(
        messages.begin(), messages.end(),
        [text](const std::string& message) { return message.find(text) != std::string::npos; }));
  }

  bool waitForLine(std::string_view text) const {
    return runMainLoopUntil([&] { return countOf(text) > 0; });
  }

  std::string reported(const std::string& field) const {
    auto requests = portal_.requests();
    return requests.empty() ? "no request" : requests.back().formFields[field];
  }

  PrivateHome home_;
  DesktopFiles files_{home_};
  std::filesystem::path preferences_ = home_.config() / "brelto/Preferences";
  TestPortal portal_;
  RealHost host_;
  std::optional<FreshProtocolHandler> handler_;
  std::shared_ptr<ZQN5VendrilAppDelegate> delegate_ = std::make_shared<ZQN5VendrilAppDelegate>();
};

TEST_F(ServiceFaults, WithoutAnyALinkIsReported) {
  launchAndOpenWorks();
  EXPECT_THAT(reported("data"), HasSubstr("4.0.1"));
  EXPECT_EQ(host_.fakeApplication.terminations, 0);
}

TEST_F(ServiceFaults, DesktopThatRefusesTheSchemesEndsTheApplication) {
  class Refusing : public ForwardingLaunchServices {
   public:
    using ForwardingLaunchServices::ForwardingLaunchServices;
    std::int32_t setDefaultHandlerForURLScheme(std::string_view, std::string_view) override {
      return kUnknownError;
    }
  } services(host_.realLaunchServices);
  host_.use(services);
  launch();
  open("never");
  EXPECT_EQ(countOf("Failed to register for supported protocol schemes"), 1U);
  EXPECT_EQ(host_.fakeApplication.terminations, 1);
  EXPECT_THAT(portal_.requests(), IsEmpty());
}

TEST_F(ServiceFaults, ApplicationThatDoesNotTerminateStillTakesNoLinkWithoutItsSchemes) {
  class Unending : public ForwardingApplication {
   public:
    using ForwardingApplication::ForwardingApplication;
    void terminate() override {}
  } application(host_.fakeApplication);
  host_.use(application);
  std::filesystem::remove(home_.data() / "applications" / (std::string(kDesktopId) + ".desktop"));
  launch();
  open("never");
  EXPECT_EQ(countOf("Saving URL to buffer"), 1U);
  EXPECT_THAT(portal_.requests(), IsEmpty());
}

TEST_F(ServiceFaults, LoginItemThatCannotBeAddedCostsNoLink) {
  class Full : public ForwardingSessionLoginItems {
   public:
    using ForwardingSessionLoginItems::ForwardingSessionLoginItems;
    Item insertItemAtEnd(const Url&, const PropertyList::Dictionary&) override { return nullptr; }
  } items(host_.realSessionLoginItems);
  host_.use(items);
  launchAndOpenWorks();
  EXPECT_EQ(countOf("Failed to add application to login items"), 1U);
}

TEST_F(ServiceFaults, LoginItemThatCannotBeRemovedCostsNoLink) {
  class Stubborn : public ForwardingSessionLoginItems {
   public:
    using ForwardingSessionLoginItems::ForwardingSessionLoginItems;
    std::int32_t remove(const Item&) override { return EACCES; }
  } items(host_.realSessionLoginItems);
  host_.use(items);
  files_.autostart("old.desktop", desktopEntryText("Vendril", "/gone/vendril"));
  launchAndOpenWorks();
  EXPECT_EQ(countOf("Successfully added application to login items"), 1U);
}

TEST_F(ServiceFaults, ConfigurationThatCannotBeReadIsReplacedByTheDefault) {
  class Unreadable : public ForwardingPropertyListFiles {
   public:
    using ForwardingPropertyListFiles::ForwardingPropertyListFiles;
    std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
        const std::string&) const override {
      return std::nullopt;
    }
  } files(host_.realPropertyListFiles);
  host_.use(files);
  launchAndOpenWorks();
  EXPECT_THAT(reported("data"), HasSubstr(kDefaultVersion));
}

TEST_F(ServiceFaults, NoMemoryForOneLinkIsALineAndTheNextLinkWorks) {
  class Exhausted : public ForwardingPropertyListFiles {
   public:
    using ForwardingPropertyListFiles::ForwardingPropertyListFiles;
    std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
        const std::string&) const override {
      throw std::bad_alloc();
    }
  } files(host_.realPropertyListFiles);
  launch();
  host_.use(files);
  open("lost");
  EXPECT_EQ(countOf("The handling of a link failed:"), 1U);
  host_.use(host_.realPropertyListFiles);
  EXPECT_TRUE(openedLinkSucceeds());
  EXPECT_THAT(portal_.requests(), SizeIs(1));
}

TEST_F(ServiceFaults, SettingsThatCannotBeStoredCostNoLink) {
  class ReadOnly : public ForwardingUserDefaults {
   public:
    using ForwardingUserDefaults::ForwardingUserDefaults;
    bool synchronize() override { return false; }
  } defaults(host_.realUserDefaults);
  host_.use(defaults);
  launchAndOpenWorks();
  EXPECT_FALSE(std::filesystem::exists(preferences_ / "com.brelto.vendril.plist"));
}

TEST_F(ServiceFaults, UserWithoutALibraryGetsTheDefaultReported) {
  class Homeless : public ForwardingUserDirectories {
   public:
    using ForwardingUserDirectories::ForwardingUserDirectories;
    std::vector<std::string> libraryDirectories() const override { return {}; }
  } directories(host_.realUserDirectories);
  host_.use(directories);
  launchAndOpenWorks();
  EXPECT_THAT(reported("data"), HasSubstr(kDefaultVersion));
}

TEST_F(ServiceFaults, RequestWithoutAnIdentifierIsSentAllTheSame) {
  class Empty : public ForwardingUuidGenerator {
   public:
    using ForwardingUuidGenerator::ForwardingUuidGenerator;
    std::optional<std::string> createUuidString() override { return std::nullopt; }
  } generator(host_.realUuidGenerator);
  host_.use(generator);
  launchAndOpenWorks();
  EXPECT_EQ(countOf("Sending POST request  to: "), 1U);
}

TEST_F(ServiceFaults, NetworkThatFailsIsOneOutcomeAndTheNextLinkWorks) {
  class Down : public ForwardingUrlConnection {
   public:
    using ForwardingUrlConnection::ForwardingUrlConnection;
    void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                                 CompletionHandler handler) override {
      request.url = std::nullopt;
      ForwardingUrlConnection::sendAsynchronousRequest(std::move(request), std::move(queue),
                                                       std::move(handler));
    }
  } connection(*host_.realUrlConnection);
  launch();
  host_.use(connection);
  open("lost");
  EXPECT_TRUE(waitForLine(" failed with error: Unsupported URL"));
  host_.use(*host_.realUrlConnection);
  EXPECT_TRUE(openedLinkSucceeds());
}

TEST_F(ServiceFaults, WorkersThatAreHeldUpHoldUpOutcomesAlone) {
  class Stalled : public ForwardingOperationQueue {
   public:
    using ForwardingOperationQueue::ForwardingOperationQueue;
    void addOperation(Operation operation) override {
      const std::lock_guard lock(mutex_);
      waiting_.push_back(std::move(operation));
    }
    void goOn() {
      const std::lock_guard lock(mutex_);
      for (Operation& operation : waiting_) {
        ForwardingOperationQueue::addOperation(std::move(operation));
      }
      waiting_.clear();
    }
    std::size_t count() {
      const std::lock_guard lock(mutex_);
      return waiting_.size();
    }

   private:
    std::mutex mutex_;
    std::vector<Operation> waiting_;
  } queue(host_.realQueue);
  host_.use(queue);
  launch();
  open("1");
  open("2");
  EXPECT_TRUE(runMainLoopUntil([&] { return queue.count() == 2; }));
  EXPECT_EQ(countOf(kSent), 0U);
  queue.goOn();
  EXPECT_TRUE(runMainLoopUntil([&] { return countOf(kSent) == 2; }));
}

TEST_F(ServiceFaults, ClockThatIsSetBackCostsNoLink) {
  class SetBack : public ForwardingProcessInfo {
   public:
    using ForwardingProcessInfo::ForwardingProcessInfo;
    Date currentDate() const override {
      return ForwardingProcessInfo::currentDate() - std::chrono::hours(1);
    }
  } process(host_.fakeProcessInfo);
  launch();
  host_.use(process);
  EXPECT_TRUE(openedLinkSucceeds());
  EXPECT_EQ(countOf("    Uptime = 3600;\n"), 1U);
}

TEST_F(ServiceFaults, BundleThatHasLostItsNameIsACaughtExceptionAndTheNextLinkWorks) {
  class Nameless : public ForwardingBundle {
   public:
    using ForwardingBundle::ForwardingBundle;
    std::optional<PropertyList> objectForInfoDictionaryKey(std::string_view key) const override {
      return key == "CFBundleName" ? std::nullopt
                                   : ForwardingBundle::objectForInfoDictionaryKey(key);
    }
  } bundle(host_.fakeBundle);
  launch();
  host_.use(bundle);
  open("lost");
  EXPECT_EQ(countOf("Caught exception NSInvalidArgumentException - "), 1U);
  host_.use(host_.fakeBundle);
  EXPECT_TRUE(openedLinkSucceeds());
}

TEST_F(ServiceFaults, LogThatLosesEverythingCostsNoLink) {
  class Lost : public ForwardingSystemLog {
   public:
    using ForwardingSystemLog::ForwardingSystemLog;
    void write(std::string_view message) noexcept override {
      hasOutcome = hasOutcome || message.find(kSent) != std::string_view::npos;
    }
    std::atomic<bool> hasOutcome = false;
  } lost(host_.fakeSystemLog);
  host_.use(lost);
  launch();
  open("7");
  EXPECT_TRUE(runMainLoopUntil([&] { return lost.hasOutcome.load(); }));
  EXPECT_EQ(reported("session_id"), "7");
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(ServiceFaults, EventWithoutATextIsALineAndTheNextLinkWorks) {
  class Wordless : public ForwardingUrlEvents {
   public:
    using ForwardingUrlEvents::ForwardingUrlEvents;
    void setEventHandler(Handler handler, FourCharCode eventClass, FourCharCode eventId) override {
      ForwardingUrlEvents::setEventHandler(
          [this, handler = std::move(handler)](const UrlEvent& event, UrlEvent& reply) {
            handler(isWordless ? UrlEvent{} : event, reply);
          },
          eventClass, eventId);
    }
    bool isWordless = true;
  } events(host_.realUrlEvents);
  host_.use(events);
  launch();
  open("lost");
  EXPECT_EQ(countOf("Failed to decode URL from event descriptor"), 1U);
  events.isWordless = false;
  EXPECT_TRUE(openedLinkSucceeds());
}

TEST_F(ServiceFaults, AlertThatCannotBeShownReturnsAndCostsNoLink) {
  class Invisible : public ForwardingAlert {
   public:
    using ForwardingAlert::ForwardingAlert;
    long runModal() override { return kAbortReturn; }
  } alert(host_.fakeAlert);
  host_.use(alert);
  launch();
  delegate_->showAlert();
  EXPECT_EQ(host_.fakeAlert.messageText, "Network connection error");
  EXPECT_EQ(countOf("User confirmed"), 0U);
  EXPECT_TRUE(openedLinkSucceeds());
}

}  // namespace
}  // namespace vendril
