#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "config/ZQN5PublishedConfiguration.h"
#include "support/FakeHost.h"
#include "support/TemporaryDirectory.h"

namespace vendril {

/// A record on a fake desktop whose user has a Library directory, and what the record logs.
class ConfigurationTest : public testing::Test {
 protected:
  ConfigurationTest() { fake.fakeUserDirectories.directories = {library.path(), "/never/asked"}; }

  std::string preferences() const { return library / "Preferences"; }
  std::string filePath() const { return library / "Preferences/group.com.brelto.orvanta.plist"; }

  /// Publishes a file whose root is `root`.
  void publishRoot(PropertyList::Dictionary root) {
    fake.fakePropertyListFiles.files.insert_or_assign(filePath(), std::move(root));
  }
  /// Publishes a file with a configuration.
  void publish(PropertyList::Dictionary values) {
    publishRoot({{"PublishedConfiguration", std::move(values)}});
  }

  /// Puts a plain file where the preferences folder should be.
  void blockPreferences() { library.write("Preferences", ""); }

  /// The messages since the last call.
  std::vector<std::string> logged() { return std::exchange(messages_, {}); }

  FakeHost fake;
  TemporaryDirectory library;
  ZQN5PublishedConfiguration configuration{
      [this](std::string_view message) { messages_.emplace_back(message); }};

 private:
  std::vector<std::string> messages_;
};

}  // namespace vendril
