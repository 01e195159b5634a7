#include "support/DelegateFixture.h"

namespace vendril {
namespace {

using ::testing::ElementsAre;

constexpr const char* kAlready = "There is already error alert - do not show again";
constexpr const char* kSend = "Send confirmation to the user about network connection issues";
constexpr const char* kConfirmed =
    "User confirmed about network connection issues, remove errorAlert";

class ErrorAlert : public DelegateFixture {
 protected:
  ErrorAlert() { launch(); }
};

TEST_F(ErrorAlert, CallWhileTheAlertIsUpLogsAlreadyAndShowsNoSecondAlert) {
  host.prepareAlert = [this](FakeAlert& alert) {
    alert.whileModal = [this] { delegate->showAlert(); };
  };
  delegate->showAlert();
  EXPECT_THAT(delegateMessages(), ElementsAre(kSend, kAlready, kConfirmed));
  ASSERT_EQ(host.alerts.size(), 1U);
  EXPECT_EQ(host.alerts[0]->runs, 1);
}

TEST_F(ErrorAlert, TwoConfirmedCallsShowTwoAlertsInTurn) {
  delegate->showAlert();
  delegate->showAlert();
  EXPECT_THAT(delegateMessages(), ElementsAre(kSend, kConfirmed, kSend, kConfirmed));
  EXPECT_EQ(host.alerts.size(), 2U);
  EXPECT_EQ(delegate->errorAlert(), nullptr);
}

TEST_F(ErrorAlert, WithoutATableTheDefaultTextsAndOneButtonAreShown) {
  delegate->showAlert();
  ASSERT_EQ(host.alerts.size(), 1U);
  EXPECT_THAT(host.alerts[0]->buttons, ElementsAre("OK"));
  EXPECT_EQ(host.alerts[0]->messageText, "Network connection error");
  EXPECT_EQ(host.alerts[0]->informativeText,
            "There was an error when Vendril was sending data to Mervale Meeting Service");
  EXPECT_EQ(host.alerts[0]->style, Alert::Style::warning);
  EXPECT_EQ(static_cast<int>(host.alerts[0]->style), 0);
}

TEST_F(ErrorAlert, AnotherResultLeavesTheAlertStuckAndTheNextCallShowsNothing) {
  host.prepareAlert = [](FakeAlert& alert) { alert.result = 1001; };
  delegate->showAlert();
  EXPECT_NE(delegate->errorAlert(), nullptr);
  delegate->showAlert();
  delegate->showAlert();
  EXPECT_THAT(delegateMessages(), ElementsAre(kSend, kAlready, kAlready));
  EXPECT_EQ(host.alerts.size(), 1U);
}

TEST_F(ErrorAlert, AlertIsStoredBeforeItIsShown) {
  std::shared_ptr<Alert> seen;
  host.prepareAlert = [this, &seen](FakeAlert& alert) {
    alert.whileModal = [this, &seen] { seen = delegate->errorAlert(); };
  };
  delegate->showAlert();
  ASSERT_EQ(host.alerts.size(), 1U);
  EXPECT_EQ(seen, host.alerts[0]);
}

TEST_F(ErrorAlert, TextsAreLookedUpAnewOnEachCall) {
  delegate->showAlert();
  host.fakeBundle.strings = {
      {{"Localizable", "ZQN5ErrorHandler.buttonOk.title"}, "Gut"},
      {{"Localizable", "ZQN5Vendril.connectionError.title"}, "Netzwerkfehler"},
      {{"Localizable", "ZQN5Vendril.connectionError.messageMervale"}, "Fehler beim Senden"}};
  delegate->showAlert();
  ASSERT_EQ(host.alerts.size(), 2U);
  EXPECT_THAT(host.alerts[1]->buttons, ElementsAre("Gut"));
  EXPECT_EQ(host.alerts[1]->messageText, "Netzwerkfehler");
  EXPECT_EQ(host.alerts[1]->informativeText, "Fehler beim Senden");
}

TEST_F(ErrorAlert, AFailedRequestShowsNoAlert) {
  open("vendril:?portalURI=http://127.0.0.1/?session_id=7");
  host.fakeUrlConnection.complete(0, std::nullopt, std::nullopt, UrlError{"no network"});
  runCompletions();
  EXPECT_TRUE(host.alerts.empty());
}

}  // namespace
}  // namespace vendril
