#include "platform/freedesktop/XdgUserDirectories.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>

#include <cstdlib>
#include <optional>

namespace vendril::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Gives an environment variable another value, or none, for a while.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) {
      old_ = old;
    }
    set(value);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { set(old_ ? old_->c_str() : nullptr); }

 private:
  void set(const char* value) const {
    if (value != nullptr) {
      setenv(name_, value, 1);
    } else {
      unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> old_;
};

std::vector<std::string> librariesWith(const char* configHome, const char* home,
                                       uid_t user = getuid()) {
  const Variable first("XDG_CONFIG_HOME", configHome);
  const Variable second("HOME", home);
  return XdgUserDirectories(user).libraryDirectories();
}

TEST(XdgUserDirectories, AreInTheConfigurationDirectory) {
  EXPECT_THAT(librariesWith("/config", "/home/me"), ElementsAre("/config/brelto"));
  EXPECT_THAT(librariesWith("/config/", nullptr), ElementsAre("/config/brelto"));
}

TEST(XdgUserDirectories, AreInTheHomeDirectoryWithoutAnAbsoluteConfigurationDirectory) {
  for (const char* configHome : {static_cast<const char*>(nullptr), "", "relative", "./a"}) {
    EXPECT_THAT(librariesWith(configHome, "/home/me"), ElementsAre("/home/me/.config/brelto"));
  }
}

TEST(XdgUserDirectories, AreInTheHomeDirectoryOfTheUserDatabaseWithoutVariables) {
  const passwd* user = getpwuid(0);
  ASSERT_NE(user, nullptr);
  const std::string expected = std::string(user->pw_dir) + "/.config/brelto";
  EXPECT_THAT(librariesWith(nullptr, nullptr, 0), ElementsAre(expected));
  EXPECT_THAT(librariesWith("", "relative", 0), ElementsAre(expected));
}

TEST(XdgUserDirectories, AreNoneWhenNoHomeDirectoryIsKnown) {
  constexpr uid_t kNobodyThere = 3'999'999'999;
  EXPECT_THAT(librariesWith(nullptr, nullptr, kNobodyThere), IsEmpty());
}

}  // namespace
}  // namespace vendril::test
