#include <algorithm>
#include <stdexcept>

#include "platform/PlatformException.h"
#include "support/DelegateFixture.h"
#include "support/FailingHost.h"

namespace vendril {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kLink = "vendril:?portalURI=http://p?session_id=7";
constexpr const char* kCaught = "Caught exception NSRangeException - out of range";

/// A delegate whose desktop breaks in the middle of a link.
class ExceptionGuard : public DelegateFixture {
 protected:
  ExceptionGuard() { launch(); }

  static void throwPlatformException() {
    throw PlatformException("NSRangeException", "out of range");
  }

  /// Breaks `service` at its use number `use`, opens a link and then another one, and returns what
  /// the delegate logged for the first.
  std::vector<std::string> messagesOfBrokenLink(const void* service, int use,
                                                const std::string& link = kLink) {
    failing.breakService(service, use, throwPlatformException);
    open(link);
    std::vector<std::string> messages = delegateMessages();
    EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
    open(kLink);
    EXPECT_EQ(host.fakeUrlConnection.requests.size(), 1U) << "the next link has to be processed";
    return messages;
  }

  FailingHost failing{host};
};

TEST_F(ExceptionGuard, PlatformExceptionIsLoggedWithNameAndReason) {
  failing.breakService(&host.fakeLaunchServices, 1, throwPlatformException);
  delegate->process(*Url::parse(kLink));
  EXPECT_THAT(host.fakeSystemLog.take(),
              ElementsAre(std::string("[ZQN5VendrilAppDelegate] ") + kCaught));
}

TEST_F(ExceptionGuard, OtherExceptionsPassThrough) {
  failing.breakService(&host.fakeLaunchServices, 1, [] { throw std::runtime_error("other"); });
  EXPECT_THROW(delegate->process(*Url::parse(kLink)), std::runtime_error);
  EXPECT_THAT(host.fakeSystemLog.take(), IsEmpty());
}

TEST_F(ExceptionGuard, CoversTheProcessDetails) {
  const std::vector<const void*> services{&host.fakeBundle, &host.fakeProcessInfo,
                                          &host.fakeSessionLoginItems, &host.fakeLaunchServices};
  for (const void* service : services) {
    host.fakeUrlConnection.requests.clear();
    // The intake asks for the date of the link's arrival before the link is processed.
    const int use = service == &host.fakeProcessInfo ? 2 : 1;
    EXPECT_THAT(messagesOfBrokenLink(service, use), ElementsAre(kCaught));
  }
}

TEST_F(ExceptionGuard, CoversTheLoadOfTheConfigurationAndOfTheLogsDirectory) {
  const std::vector<const void*> services{&host.fakeUserDirectories, &host.fakePropertyListFiles,
                                          &host.fakeUserDefaults};
  for (const void* service : services) {
    host.fakeUrlConnection.requests.clear();
    EXPECT_THAT(messagesOfBrokenLink(service, 1),
                ElementsAre(HasSubstr("Process details:"), kCaught));
  }
}

TEST_F(ExceptionGuard, CoversTheParsingOfTheLink) {
  const std::string unparsable = "vendril:nothing";
  open(kLink);  // so that the log follows its directory already
  open(unparsable);
  const std::vector<std::string> messages = host.fakeSystemLog.take();
  const auto failure = std::find_if(messages.begin(), messages.end(), [](const auto& message) {
    return message.find("Parsing failed") != std::string::npos;
  });
  ASSERT_NE(failure, messages.end()) << ::testing::PrintToString(messages);
  host.fakeUrlConnection.requests.clear();
  const int use = static_cast<int>(failure - messages.begin()) + 1;
  host.fakePropertyListFiles.history.clear();
  EXPECT_THAT(messagesOfBrokenLink(&host.fakeSystemLog, use, unparsable),
              ElementsAre(HasSubstr("Process details:"), kCaught));
  EXPECT_EQ(host.fakePropertyListFiles.history.size(), 3U)
      << "the broken link loads the configuration once, the next one twice";
}

TEST_F(ExceptionGuard, CoversTheReport) {
  EXPECT_THAT(messagesOfBrokenLink(&host.fakePropertyListFiles, 2),
              ElementsAre(HasSubstr("Process details:"), kCaught));
}

TEST_F(ExceptionGuard, CoversTheRequest) {
  for (const void* service : {static_cast<const void*>(&host.fakeUuidGenerator),
                              static_cast<const void*>(&host.fakeUrlConnection)}) {
    host.fakeUrlConnection.requests.clear();
    const std::vector<std::string> messages = messagesOfBrokenLink(service, 1);
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), kCaught);
    EXPECT_THAT(messages, Contains(HasSubstr("Payload string:")));
  }
}

}  // namespace
}  // namespace vendril
