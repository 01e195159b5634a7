#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <vector>

#include "support/LaunchServicesFixture.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

TEST_F(LaunchServicesOfTheDesktop, NoHandlerWithoutAnApplication) {
  EXPECT_EQ(handler(), std::nullopt);
  EXPECT_THAT(GioLaunchServices().copyAllHandlersForURLScheme("vendril"), Optional(IsEmpty()));
}

TEST_F(LaunchServicesOfTheDesktop, RegisteringMakesTheApplicationTheDefaultThatGioFinds) {
  files_.application(kOurs, kMimeType);
  files_.application("other", kMimeType);
  files_.mimeApps("[Default Applications]\nx-scheme-handler/vendril=other.desktop\n");
  EXPECT_EQ(handler(), "other");
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(handler(), kOurs);
  EXPECT_EQ(gioHandler(), kOurs);
  EXPECT_EQ(list(),
            "[Default Applications]\n"
            "x-scheme-handler/vendril=com.brelto.vendril.desktop;other.desktop;\n\n"
            "[Added Associations]\nx-scheme-handler/vendril=com.brelto.vendril.desktop;\n");
}

TEST_F(LaunchServicesOfTheDesktop, QuestionsThatShareALookAreAnsweredAsOfTheFirstAndLaterOnesAnew) {
  const std::string both =
      "MimeType=x-scheme-handler/vendril;x-scheme-handler/mervale;x-scheme-handler/other;\n";
  files_.application("one", both);
  files_.application("other", both);
  const auto listOf = [](const std::string& id) {
    return "[Default Applications]\nx-scheme-handler/vendril=" + id +
           ".desktop\nx-scheme-handler/mervale=" + id + ".desktop\nx-scheme-handler/other=" + id +
           ".desktop\n";
  };
  GioLaunchServices services;
  files_.mimeApps(listOf("one"));
  auto look = services.shareOneLook({"mervale", "vendril"});
  EXPECT_EQ(services.copyDefaultHandlerForURLScheme("vendril"), "one");
  files_.mimeApps(listOf("other"));
  EXPECT_EQ(services.copyDefaultHandlerForURLScheme("mervale"), "one");
  EXPECT_EQ(services.copyDefaultHandlerForURLScheme("other"), "other") << "it is not for that one";
  look.reset();
  EXPECT_EQ(services.copyDefaultHandlerForURLScheme("mervale"), "other");
}

TEST_F(LaunchServicesOfTheDesktop, RegisteringMeansTheListsAsTheyAreWhateverLookIsShared) {
  files_.application(kOurs, kMimeType);
  files_.application("other", kMimeType);
  files_.mimeApps("[Default Applications]\nx-scheme-handler/vendril=other.desktop\n");
  GioLaunchServices services;
  const auto look = services.shareOneLook({"mervale", "vendril"});
  ASSERT_EQ(services.copyDefaultHandlerForURLScheme("vendril"), "other");
  EXPECT_EQ(services.setDefaultHandlerForURLScheme("vendril", kOurs), LaunchServices::kSuccess);
  EXPECT_EQ(handler(), kOurs);
}

TEST_F(LaunchServicesOfTheDesktop, RegisteringWorksWithoutAConfigurationDirectory) {
  files_.application(kOurs);
  std::filesystem::remove_all(home_.config());
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(handler(), kOurs);
}

TEST_F(LaunchServicesOfTheDesktop, ForeignLinesStayTheSameByteForByte) {
  files_.application(kOurs);
  files_.mimeApps(kUsersList);
  ASSERT_EQ(registerOurs(), LaunchServices::kSuccess);
  std::string rest = list();
  for (const std::string added :
       {"x-scheme-handler/vendril=com.brelto.vendril.desktop;\n", "\n\n[Added Associations]\n",
        "x-scheme-handler/vendril=com.brelto.vendril.desktop;\n"}) {
    ASSERT_NE(rest.find(added), std::string::npos) << rest;
    rest.erase(rest.find(added), added.size());
  }
  EXPECT_EQ(rest, kUsersList);
}

TEST_F(LaunchServicesOfTheDesktop, RegisteringAgainDoesNotTouchTheFile) {
  files_.application(kOurs);
  files_.mimeApps(kUsersList);
  ASSERT_EQ(registerOurs(), LaunchServices::kSuccess);
  const std::string once = list();
  std::filesystem::last_write_time(listPath(), std::filesystem::file_time_type{});
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(list(), once);
  EXPECT_EQ(std::filesystem::last_write_time(listPath()), std::filesystem::file_time_type{});
}

TEST_F(LaunchServicesOfTheDesktop, SymbolicLinkIsWrittenThrough) {
  files_.application(kOurs);
  const auto target = home_.root() / "dotfiles/mimeapps";
  writeFile(target, kUsersList);
  std::filesystem::create_symlink("../../dotfiles/mimeapps", listPath());
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(std::filesystem::read_symlink(listPath()), "../../dotfiles/mimeapps");
  EXPECT_NE(readFile(target), kUsersList);
  EXPECT_EQ(handler(), kOurs);
}

TEST_F(LaunchServicesOfTheDesktop, ListThatDoesNotParseIsRefusedAndNeverWritten) {
  files_.application(kOurs);
  for (const std::string text :
       {"[Default Applications]\nx-scheme-handler/http=a.desktop\n<<<<<<< mine\n", "rubbish",
        "[Default Applications\n"}) {
    files_.mimeApps(text);
    EXPECT_EQ(registerOurs(), LaunchServices::kUnknownError) << text;
    EXPECT_EQ(list(), text);
  }
}

TEST_F(LaunchServicesOfTheDesktop, ListThatBecomesTooLongToBeFollowedIsAnUnknownError) {
  constexpr std::size_t kLongest = std::size_t{4} << 20U;
  files_.application(kOurs);
  files_.mimeApps("#" + std::string(kLongest - 2, 'x') + "\n");
  EXPECT_EQ(registerOurs(), LaunchServices::kUnknownError);
}

TEST_F(LaunchServicesOfTheDesktop, UnknownApplicationIsRefusedAndNothingIsWritten) {
  files_.application("hidden", "Hidden=true\n");
  files_.application("gone", "TryExec=/nonexistent/program\n");
  writeFile(home_.data() / "applications/link.desktop", "[Desktop Entry]\nType=Link\nURL=x:y\n");
  std::filesystem::create_directories(home_.data() / "applications/directory.desktop");
  ASSERT_EQ(mkfifo((home_.data() / "applications/fifo.desktop").c_str(), S_IRWXU), 0);
  for (const std::string id :
       {kOurs, "hidden", "gone", "link", "directory", "fifo", "", "../applications/x", "a\nb"}) {
    EXPECT_EQ(GioLaunchServices().setDefaultHandlerForURLScheme("vendril", id),
              LaunchServices::kApplicationNotFound)
        << id;
  }
  EXPECT_FALSE(std::filesystem::exists(listPath()));
}

TEST_F(LaunchServicesOfTheDesktop, IdentifierThatNoListCanHoldAsItIsIsRefused) {
  for (const std::string id : {"a;b", "a\\b", "a\nb", "a\rb", "a\tb", "a\x7F"}) {
    files_.application(id);
    EXPECT_EQ(GioLaunchServices().setDefaultHandlerForURLScheme("vendril", id),
              LaunchServices::kApplicationNotFound)
        << testing::PrintToString(id);
  }
  EXPECT_FALSE(std::filesystem::exists(listPath())) << list();
}

TEST_F(LaunchServicesOfTheDesktop, ConfigurationThatCannotBeWrittenIsAnUnknownError) {
  files_.application(kOurs);
  const auto file = home_.root() / "file";
  writeFile(file, "");
  const ScopedVariable config("XDG_CONFIG_HOME", file.string());
  EXPECT_EQ(registerOurs(), LaunchServices::kUnknownError);
}

TEST_F(LaunchServicesOfTheDesktop, ListThatIsNoRegularFileIsAnUnknownErrorAndDoesNotBlock) {
  files_.application(kOurs);
  ASSERT_EQ(mkfifo(listPath().c_str(), S_IRWXU), 0);
  EXPECT_EQ(registerOurs(), LaunchServices::kUnknownError);
  EXPECT_EQ(handler(), std::nullopt);
}

TEST_F(LaunchServicesOfTheDesktop, TextThatIsNoSchemeIsAnUnknownError) {
  files_.application(kOurs);
  for (const std::string scheme : {"", "a=b", "a\nb", "[x]", "1a", "\xC3\xA4"}) {
    EXPECT_EQ(registerOurs(scheme), LaunchServices::kUnknownError) << scheme;
  }
  EXPECT_FALSE(std::filesystem::exists(listPath()));
}

TEST_F(LaunchServicesOfTheDesktop, SchemeIsLookedUpInLowerCase) {
  files_.application(kOurs);
  EXPECT_EQ(registerOurs("VenDril"), LaunchServices::kSuccess);
  EXPECT_EQ(handler("vendril"), kOurs);
  EXPECT_EQ(handler("VENDRIL"), kOurs);
}

TEST_F(LaunchServicesOfTheDesktop, RemovedAssociationIsTakenBack) {
  files_.application(kOurs);
  files_.mimeApps(
      "[Removed Associations]\n"
      "x-scheme-handler/vendril=com.brelto.vendril.desktop;other.desktop;\n"
      "x-scheme-handler/mervale=com.brelto.vendril.desktop;\n");
  ASSERT_EQ(registerOurs("vendril"), LaunchServices::kSuccess);
  ASSERT_EQ(registerOurs("mervale"), LaunchServices::kSuccess);
  const std::string removed = "[Removed Associations]\nx-scheme-handler/vendril=other.desktop;\n\n";
  EXPECT_TRUE(list().starts_with(removed)) << list();
}

TEST_F(LaunchServicesOfTheDesktop, DesktopSpecificListThatNamesTheSchemeIsEditedToo) {
  const ScopedVariable desktop("XDG_CURRENT_DESKTOP", "Ubuntu:GNOME");
  files_.application(kOurs);
  files_.application("other");
  const std::string before = "# gnome's\n[Default Applications]\na/b = other.desktop\n";
  const auto gnome =
      files_.mimeApps(before + "x-scheme-handler/vendril=other.desktop\n", "gnome-mimeapps.list");
  const auto ubuntu = files_.mimeApps(before, "ubuntu-mimeapps.list");
  const auto kde =
      files_.mimeApps(before + "x-scheme-handler/vendril=other.desktop\n", "kde-mimeapps.list");
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(gioHandler(), kOurs);
  EXPECT_EQ(readFile(gnome),
            before + "x-scheme-handler/vendril=com.brelto.vendril.desktop;other.desktop;\n");
  EXPECT_EQ(readFile(ubuntu), before);
  EXPECT_EQ(readFile(kde), before + "x-scheme-handler/vendril=other.desktop\n");
}

TEST_F(LaunchServicesOfTheDesktop, DesktopSpecificListThatCannotBeWrittenIsAnUnknownError) {
  const ScopedVariable desktop("XDG_CURRENT_DESKTOP", "GNOME");
  files_.application(kOurs);
  files_.application("other");
  // Nobody, not even root, can replace the file with a process's arguments, which can be any text.
  const std::string text = "[Default Applications]\nx-scheme-handler/vendril=other.desktop\n#";
  const ChildProcess process({"bash", "-c", R"(exec -a "$0" sleep 60)", text});
  const auto arguments = "/proc/" + std::to_string(process.pid()) + "/cmdline";
  ASSERT_TRUE(runMainLoopUntil([&] { return readFile(arguments).starts_with(text); }));
  std::filesystem::create_symlink(arguments, home_.config() / "gnome-mimeapps.list");
  EXPECT_EQ(handler(), "other");
  EXPECT_EQ(registerOurs(), LaunchServices::kUnknownError);
  EXPECT_EQ(handler(), "other");
}

TEST_F(LaunchServicesOfTheDesktop, DesktopSpecificListThatDoesNotParseIsLeftAloneAsGioIgnoresIt) {
  const ScopedVariable desktop("XDG_CURRENT_DESKTOP", "GNOME");
  files_.application(kOurs);
  files_.application("other");
  const std::string text =
      "[Default Applications]\nx-scheme-handler/vendril=other.desktop\nrubbish\n";
  const auto gnome = files_.mimeApps(text, "gnome-mimeapps.list");
  EXPECT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(gioHandler(), kOurs);
  EXPECT_EQ(readFile(gnome), text);
}

TEST_F(LaunchServicesOfTheDesktop, OtherSchemesKeepTheirHandlers) {
  files_.application(kOurs);
  files_.application("browser");
  files_.mimeApps(kUsersList);
  ASSERT_EQ(registerOurs(), LaunchServices::kSuccess);
  EXPECT_EQ(handler("http"), "browser");
  EXPECT_EQ(handler("https"), "browser");
}

TEST_F(LaunchServicesOfTheDesktop, ChangeByAnotherProgramIsSeenAtOnce) {
  files_.application(kOurs);
  files_.application("other");
  GioLaunchServices services;
  ASSERT_EQ(services.setDefaultHandlerForURLScheme("vendril", kOurs), LaunchServices::kSuccess);
  for (int i = 0; i < 100; ++i) {
    files_.mimeApps("[Default Applications]\nx-scheme-handler/vendril=other.desktop\n");
    ASSERT_EQ(services.copyDefaultHandlerForURLScheme("vendril"), "other");
    files_.mimeApps(
        "[Default Applications]\nx-scheme-handler/vendril=com.brelto.vendril.desktop\n");
    ASSERT_EQ(services.copyDefaultHandlerForURLScheme("vendril"), kOurs);
  }
  std::filesystem::remove(files_.application(kOurs));
  EXPECT_EQ(services.copyDefaultHandlerForURLScheme("vendril"), std::nullopt);
}

TEST_F(LaunchServicesOfTheDesktop, AllHandlersAreTheInstalledOnesOfListsAndCachesInTheirOrder) {
  files_.application("added");
  files_.application("cached");
  files_.application("hidden", "Hidden=true\n");
  files_.systemApplication("systems");
  files_.systemApplication("removed");
  files_.systemApplication("cached");
  files_.mimeApps(
      "[Added Associations]\nx-scheme-handler/vendril=added.desktop;gone.desktop;hidden.desktop\n"
      "[Removed Associations]\nx-scheme-handler/vendril=removed.desktop\n");
  writeFile(home_.data() / "applications/mimeinfo.cache", "[MIME Cache]\n");
  writeFile(
      home_.systemData() / "applications/mimeinfo.cache",
      "[MIME Cache]\nx-scheme-handler/vendril=removed.desktop;cached.desktop;systems.desktop\n");
  EXPECT_THAT(GioLaunchServices().copyAllHandlersForURLScheme("vendril"),
              Optional(ElementsAre("added", "systems")))
      << "an entry of the user's own overrides what the system's cache says of it";
}

/// What lists there are, and which default GIO and we find then.
struct Situation {
  std::string name;
  std::string currentDesktop;
  /// Paths below the root of the private home.
  std::vector<std::pair<std::string, std::string>> lists;
  std::optional<std::string> expected;
};

void PrintTo(const Situation& situation, std::ostream* out) {
  *out << situation.name;
}

class DefaultHandler : public LaunchServicesOfTheDesktop,
                       public testing::WithParamInterface<Situation> {};

TEST_P(DefaultHandler, IsTheOneThatGioFinds) {
  const ScopedVariable desktop("XDG_CURRENT_DESKTOP", GetParam().currentDesktop);
  for (const std::string id : {"one", "two", "kde/three"}) {
    files_.application(id);
  }
  files_.systemApplication("systems");
  files_.application("broken", "TryExec=/nonexistent/program\n");
  for (const auto& [path, text] : GetParam().lists) {
    writeFile(home_.root() / path, text);
  }
  EXPECT_EQ(handler(), GetParam().expected);
  EXPECT_EQ(gioHandler(), GetParam().expected);
}

std::string defaults(const std::string& ids) {
  return "[Default Applications]\nx-scheme-handler/vendril=" + ids + "\n";
}
std::string added(const std::string& ids) {
  return "[Added Associations]\nx-scheme-handler/vendril=" + ids + "\n";
}
std::string removed(const std::string& ids) {
  return "[Removed Associations]\nx-scheme-handler/vendril=" + ids + "\n";
}
std::string cached(const std::string& ids) {
  return "[MIME Cache]\nx-scheme-handler/vendril=" + ids + "\n";
}

constexpr const char* kUsers = "home/.config/mimeapps.list";
constexpr const char* kGnomes = "home/.config/gnome-mimeapps.list";
constexpr const char* kSystems = "system/etc/xdg/mimeapps.list";
constexpr const char* kData = "home/.local/share/applications/mimeapps.list";
constexpr const char* kSystemCache = "system/share/applications/mimeinfo.cache";

INSTANTIATE_TEST_SUITE_P(
    Situations, DefaultHandler,
    testing::Values(
        Situation{"None", "", {}, std::nullopt},
        Situation{"FirstOfList", "", {{kUsers, defaults("two.desktop;one.desktop")}}, "two"},
        Situation{"NextWhenNotInstalled", "", {{kUsers, defaults("x.desktop;one.desktop")}}, "one"},
        Situation{"NextWhenBroken", "", {{kUsers, defaults("broken.desktop;one.desktop")}}, "one"},
        Situation{"SystemsList", "", {{kSystems, defaults("systems.desktop")}}, "systems"},
        Situation{"UsersBeforeSystems",
                  "",
                  {{kSystems, defaults("systems.desktop")}, {kUsers, defaults("one.desktop")}},
                  "one"},
        Situation{"DesktopsBeforeUsers",
                  "GNOME",
                  {{kGnomes, defaults("two.desktop")}, {kUsers, defaults("one.desktop")}},
                  "two"},
        Situation{"OtherDesktopsIgnored",
                  "KDE",
                  {{kGnomes, defaults("two.desktop")}, {kUsers, defaults("one.desktop")}},
                  "one"},
        Situation{
            "MalformedIgnored",
            "",
            {{kUsers, defaults("one.desktop") + "rubbish\n"}, {kData, defaults("two.desktop")}},
            "two"},
        Situation{"DefaultBeforeAssociation",
                  "",
                  {{kUsers, added("one.desktop")}, {kData, defaults("two.desktop")}},
                  "two"},
        Situation{"AssociationWithoutDefault", "", {{kUsers, added("one.desktop")}}, "one"},
        Situation{
            "CacheWithoutDefault", "", {{kSystemCache, cached("systems.desktop")}}, "systems"},
        Situation{
            "CacheMaskedByUsersEntry", "", {{kSystemCache, cached("one.desktop")}}, std::nullopt},
        Situation{"RemovedFromCache",
                  "",
                  {{kUsers, removed("systems.desktop")}, {kSystemCache, cached("systems.desktop")}},
                  std::nullopt},
        Situation{"OldDefaultsList",
                  "",
                  {{"system/share/applications/defaults.list", defaults("systems.desktop")}},
                  "systems"},
        Situation{
            "BadEncodingIgnored",
            "",
            {{kUsers, defaults("\xE9.desktop;one.desktop")}, {kData, defaults("two.desktop")}},
            "two"}),
    [](const auto& situation) { return situation.param.name; });

TEST_F(LaunchServicesOfTheDesktop, ApplicationInASubdirectoryHasADashInItsIdentifier) {
  files_.application("vendor/sub-dir/app");
  EXPECT_EQ(GioLaunchServices().setDefaultHandlerForURLScheme("vendril", "vendor-sub-dir-app"),
            LaunchServices::kSuccess);
  EXPECT_EQ(handler(), "vendor-sub-dir-app");
}

}  // namespace
}  // namespace vendril
