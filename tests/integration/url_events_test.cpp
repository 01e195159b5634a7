#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/freedesktop/DesktopUrlEvents.h"
#include "support/FakeSystemLog.h"

namespace vendril {
namespace {

using testing::Contains;
using testing::ElementsAre;

class UrlEventsTest : public testing::Test {
 protected:
  void handleWith(UrlEvents::Handler handler) {
    events_.setEventHandler(std::move(handler), UrlEvents::kInternetEventClass,
                            UrlEvents::kGetUrlEventId);
  }
  UrlEvents::Handler rememberer() {
    return [this](const UrlEvent& event, UrlEvent&) { links_.push_back(*event.directObject); };
  }

  FakeSystemLog log_;
  DesktopUrlEvents events_{log_};
  std::vector<std::string> links_;
};

TEST_F(UrlEventsTest, DeliversALinkByteForByteToTheGetUrlHandler) {
  handleWith(rememberer());
  events_.deliver("s:%41?A b\xFF");
  events_.deliver("");
  EXPECT_THAT(links_, ElementsAre("s:%41?A b\xFF", ""));
}

TEST_F(UrlEventsTest, LeavesTheOtherHandlerAlone) {
  events_.setEventHandler(rememberer(), UrlEvents::kWebEventClass, UrlEvents::kOpenUrlEventId);
  events_.deliver("s:x");
  EXPECT_TRUE(links_.empty());
  EXPECT_THAT(log_.messages(), ElementsAre("Nothing handles links"));
}

TEST_F(UrlEventsTest, RecordsWhatAHandlerThrowsAndGoesOn) {
  handleWith([](const UrlEvent&, UrlEvent&) { throw std::runtime_error("broken"); });
  events_.deliver("s:x");
  handleWith([](const UrlEvent&, UrlEvent&) { throw 1; });
  events_.deliver("s:x");
  EXPECT_EQ(log_.messages().size(), 3U);
  EXPECT_THAT(log_.messages(), Contains("broken"));
}

TEST_F(UrlEventsTest, HandlerMaySetItsSuccessorWhileItRuns) {
  handleWith([this](const UrlEvent& event, UrlEvent&) {
    handleWith(rememberer());
    links_.push_back("first " + *event.directObject);
  });
  events_.deliver("s:1");
  events_.deliver("s:2");
  EXPECT_THAT(links_, ElementsAre("first s:1", "s:2"));
}

}  // namespace
}  // namespace vendril
