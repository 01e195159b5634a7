#include "platform/freedesktop/ExecutableBundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <map>

#include "support/PlistBytes.h"
#include "support/PlistTestDirectory.h"

namespace vendril::test {
namespace {

namespace fs = std::filesystem;

std::string littleEndian(std::size_t number) {
  std::string bytes = bigEndianBytes(number, 4);
  return {bytes.rbegin(), bytes.rend()};
}

/// A compiled message catalogue: a header of seven numbers, two tables of lengths and offsets, one
/// of message ids and one of translations, and the texts.
std::string messageCatalogue(std::map<std::string, std::string> messages) {
  messages[""] = "Content-Type: text/plain; charset=UTF-8\n";
  constexpr std::size_t kHeaderSize = 28;
  const std::size_t tableSize = 8 * messages.size();
  std::string ids;
  std::string translations;
  std::string texts;
  const auto add = [&](std::string& table, const std::string& text) {
    table += littleEndian(text.size()) + littleEndian(kHeaderSize + 2 * tableSize + texts.size());
    texts += text + '\0';
  };
  for (const auto& [id, translation] : messages) {
    add(ids, id);
    add(translations, translation);
  }
  return littleEndian(0x950412DE) + littleEndian(0) + littleEndian(messages.size()) +
         littleEndian(kHeaderSize) + littleEndian(kHeaderSize + tableSize) + littleEndian(0) +
         littleEndian(0) + ids + translations + texts;
}

/// Runs the process in a locale, with German as the user's first language.
class German {
 public:
  explicit German(const char* locale) {
    setenv("LANGUAGE", "de", 1);
    EXPECT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
  }
  German(const German&) = delete;
  German& operator=(const German&) = delete;
  ~German() {
    unsetenv("LANGUAGE");
    std::setlocale(LC_ALL, "C");
  }
};

class LocalizedBundle : public testing::Test {
 protected:
  ExecutableBundle bundleWith(const std::string& name,
                              const std::map<std::string, std::string>& messages) {
    const std::string locales = directory_.file(name);
    fs::create_directories(locales + "/de/LC_MESSAGES");
    writeBytes(locales + "/de/LC_MESSAGES/vendril.mo", messageCatalogue(messages));
    return ExecutableBundle({"/bin/app", "", locales});
  }

  PlistTestDirectory directory_;
};

TEST(ExecutableBundle, LiesWhereTheRunningProgramDoes) {
  const std::string path = ExecutableBundle().bundlePath();
  EXPECT_EQ(path, fs::canonical("/proc/self/exe").string());
  EXPECT_EQ(ExecutableBundle::Parts::ofRunningProgram().localeDirectory,
            fs::path(path).parent_path().parent_path() / "share/locale");
}

TEST(ExecutableBundle, IsDescribedByTheEmbeddedInformationFile) {
  const ExecutableBundle bundle;
  EXPECT_EQ(bundle.bundleIdentifier(), "com.brelto.Vendril");
  EXPECT_EQ(bundle.infoString("CFBundleName"), "Vendril");
  EXPECT_EQ(bundle.infoString("CFBundleVersion"),
            bundle.infoString("CFBundleShortVersionString").value_or("no version") + ".1");
  using Array = PropertyList::Array;
  using Dictionary = PropertyList::Dictionary;
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleURLTypes"),
            PropertyList(Array{Dictionary{{"CFBundleURLSchemes", Array{"vendril"}}},
                               Dictionary{{"CFBundleURLSchemes", Array{"mervale"}}}}));
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("Missing"), std::nullopt);
}

TEST(ExecutableBundle, HasNoEntriesWhenItsInformationFileIsDamaged) {
  const ExecutableBundle bundle({"/bin/app", "<plist>", ""});
  EXPECT_EQ(bundle.bundlePath(), "/bin/app");
  EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleName"), std::nullopt);
}

TEST(ExecutableBundle, HasNoIdentifierWhenTheEntryIsNoText) {
  const ExecutableBundle bundle(
      {"/bin/app", "<plist><dict><key>CFBundleIdentifier</key><integer>1</integer></dict></plist>",
       ""});
  EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
}

TEST(ExecutableBundle, IsWhereAnUpgradeHasPutTheNewProgram) {
  const PlistTestDirectory directory;
  const std::string path = directory.file("app");
  EXPECT_EQ(withoutDeletionMark(path), path);
  EXPECT_EQ(withoutDeletionMark(path + " (deleted)"), path);
  writeBytes(path + " (deleted)", "");
  EXPECT_EQ(withoutDeletionMark(path + " (deleted)"), path + " (deleted)");
}

TEST_F(LocalizedBundle, FindsTextsInTheUsersLanguage) {
  const ExecutableBundle bundle = bundleWith("locale", {{"OK", "Gut \xC3\xA4"}});
  const German german("C.UTF-8");
  EXPECT_EQ(bundle.localizedString("OK", "Fine", "Localizable"), "Gut \xC3\xA4");
}

TEST_F(LocalizedBundle, LooksTextsUpAnewOnEachCall) {
  const ExecutableBundle first = bundleWith("first", {{"OK", "eins"}});
  const ExecutableBundle second = bundleWith("second", {{"OK", "zwei"}});
  const German german("C.UTF-8");
  EXPECT_EQ(first.localizedString("OK", "Fine", "Localizable"), "eins");
  EXPECT_EQ(second.localizedString("OK", "Fine", "Localizable"), "zwei");
  EXPECT_EQ(first.localizedString("OK", "Fine", "Localizable"), "eins");
}

TEST_F(LocalizedBundle, AnswersWithTheGivenValueWhenThereIsNoText) {
  const ExecutableBundle bundle = bundleWith("locale", {{"OK", "Gut"}});
  const ExecutableBundle bare({"/bin/app", "", directory_.file("missing")});
  const German german("C.UTF-8");
  EXPECT_EQ(bundle.localizedString("Missing", "Fine", "Localizable"), "Fine");
  EXPECT_EQ(bundle.localizedString("OK", "Fine", "Other"), "Fine");
  EXPECT_EQ(bundle.localizedString("", "Fine", "Localizable"), "Fine");
  EXPECT_EQ(bundle.localizedString("OK", "", "Other"), "");
  EXPECT_EQ(bare.localizedString("OK", "Fine", "Localizable"), "Fine");
}

TEST_F(LocalizedBundle, AnswersWithTheGivenValueInTheCLocale) {
  const ExecutableBundle bundle = bundleWith("locale", {{"OK", "Gut"}});
  const German german("C");
  EXPECT_EQ(bundle.localizedString("OK", "Fine", "Localizable"), "Fine");
}

}  // namespace
}  // namespace vendril::test
