#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/ZQN5VendrilAppDelegate.h"
#include "support/FakeHost.h"
#include "support/FreshProtocolHandler.h"
#include "support/PrivateHome.h"

namespace vendril {

/// A delegate on a desktop in memory: the user's Library lies in a private home, the application
/// is the default handler of its schemes and a login item, the published configuration names a log
/// directory and an executable that exists.
class DelegateFixture : public ::testing::Test {
 protected:
  DelegateFixture();

  /// Launches the delegate as the application would, and forgets what has been logged so far.
  void launch();
  /// Opens `link` as the desktop would, with the log empty before it.
  void open(const std::string& link);
  /// Replaces the published configuration; nothing removes it.
  void publish(std::optional<PropertyList::Dictionary> record);
  /// The messages of the delegate itself since the last call, without the class name before them.
  std::vector<std::string> delegateMessages();
  /// The body of the only request sent, or what was found instead.
  const UrlRequest& onlyRequest() const;
  /// Runs the completions that are waiting on the delegate's queue.
  std::size_t runCompletions();

  PrivateHome home;
  FakeHost host;
  FreshProtocolHandler freshProtocolHandler;
  std::string library = home.config() / "brelto";
  std::string configurationPath = library + "/Preferences/group.com.brelto.orvanta.plist";
  std::string logDirectory = home.root() / "logs";
  std::string executable = home.root() / "orvanta";
  PropertyList::Dictionary record{{"AppName", "Brelto Orvanta 4.0"}, {"AppVersion", "4.0.1"},
                                  {"SIPDomain", "sip.example.com"},  {"LogDirectory", logDirectory},
                                  {"ExecutablePath", executable},    {"VideoCapable", true},
                                  {"MeetmeCapable", true},           {"SIPReady", true},
                                  {"isMeetMeOnly", false},           {"isTemporary", false}};
  std::shared_ptr<ZQN5VendrilAppDelegate> delegate = std::make_shared<ZQN5VendrilAppDelegate>();
};

}  // namespace vendril
