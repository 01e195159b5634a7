// Alerts on a desktop whose session bus, or a service on it, hangs: they are shown all the same.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AlertFixture.h"
#include "support/SilentBus.h"

namespace vendril {
namespace {

class AlertOnASilentBus : public ShownAlertFixture {
 protected:
  AlertOnASilentBus() { setEnvironment("DBUS_SESSION_BUS_ADDRESS", bus_.address()); }

  SilentBus bus_{(home() / "bus").string()};
};

TEST_F(AlertOnASilentBus, IsShownAndAnswered) {
  whenAlertHasFocus([this] { display().pressKey("Return"); });
  EXPECT_EQ(makeEnglishAlert()->runModal(), Alert::kFirstButtonReturn);
}

}  // namespace
}  // namespace vendril
