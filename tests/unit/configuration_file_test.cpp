#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/ConfigurationTest.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ConfigurationFile : public ConfigurationTest {};

constexpr const char* kNoLibrary =
    "Failed to create persistent storage: Cannot find user preferences directory.";
constexpr const char* kNotAFolder =
    "Failed to create persistent storage: "
    "Expected a folder to store application logs, found a file";

TEST_F(ConfigurationFile, IsNamedAfterTheGroupInThePreferencesOfTheFirstLibrary) {
  EXPECT_EQ(configuration.persistentFilePath(),
            library / "Preferences/group.com.brelto.orvanta.plist");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(ConfigurationFile, PathCreatesThePreferencesFolderButNotTheFile) {
  const mode_t mask = umask(022);
  configuration.persistentFilePath();
  umask(mask);
  EXPECT_TRUE(std::filesystem::is_directory(preferences()));
  EXPECT_EQ(std::filesystem::status(preferences()).permissions(), std::filesystem::perms{0755});
  EXPECT_FALSE(std::filesystem::exists(filePath()));
}

TEST_F(ConfigurationFile, LoadingCreatesThePreferencesFolderWithAllAboveIt) {
  fake.fakeUserDirectories.directories = {library / "deep/below"};
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_TRUE(std::filesystem::is_directory(library / "deep/below/Preferences"));
}

TEST_F(ConfigurationFile, LoadingWithoutTraceCreatesNothingAndLoadsTheSame) {
  fake.fakeUserDirectories.directories = {library / "deep/below"};
  EXPECT_TRUE(configuration.loadWithoutTrace());
  EXPECT_FALSE(std::filesystem::exists(library / "deep"));
  EXPECT_EQ(configuration.appVersion(), "3.21.0.64.24") << "the built-in default";
  fake.fakeUserDirectories.directories = {library.path()};
  publish({{"AppVersion", "4.0.1"}});
  EXPECT_TRUE(configuration.loadWithoutTrace());
  EXPECT_EQ(configuration.appVersion(), "4.0.1");
  EXPECT_FALSE(std::filesystem::exists(preferences()));
}

TEST_F(ConfigurationFile, ExpectedPathIsTheOneThatIsCreated) {
  EXPECT_EQ(ZQN5PublishedConfiguration::expectedFilePath(), configuration.persistentFilePath());
  fake.fakeUserDirectories.directories.clear();
  EXPECT_EQ(ZQN5PublishedConfiguration::expectedFilePath(), std::nullopt);
}

TEST_F(ConfigurationFile, WithoutALibraryThereIsNoPath) {
  fake.fakeUserDirectories.directories.clear();
  EXPECT_EQ(configuration.persistentFilePath(), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre(kNoLibrary));
}

TEST_F(ConfigurationFile, APlainFileInPlaceOfTheFolderFailsEveryOperation) {
  blockPreferences();
  EXPECT_EQ(configuration.persistentFilePath(), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre(kNotAFolder));
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appVersion(), "3.21.0.64.24");
  EXPECT_EQ(logged().front(), kNotAFolder);
  EXPECT_FALSE(configuration.saveToFile());
  EXPECT_THAT(
      logged(),
      ElementsAre(kNotAFolder, "Failed to save configuration to persistent storage: '(null)'"));
  EXPECT_TRUE(configuration.removeFile());
  EXPECT_THAT(logged(), ElementsAre(kNotAFolder));
}

TEST_F(ConfigurationFile, AFolderThatCannotBeCreatedFails) {
  library.write("file", "");
  fake.fakeUserDirectories.directories = {library / "file"};
  EXPECT_EQ(configuration.persistentFilePath(), std::nullopt);
  EXPECT_THAT(logged(), ElementsAre("Failed to create persistent storage: Not a directory"));
}

TEST_F(ConfigurationFile, SavingAFreshRecordWritesTheFiveFlagsAndDropsAllElse) {
  publishRoot({{"Other", "lost"}, {"PublishedConfiguration", PropertyList::Dictionary{}}});
  EXPECT_TRUE(configuration.saveToFile());
  const PropertyList::Dictionary expected{
      {"PublishedConfiguration", PropertyList::Dictionary{{"VideoCapable", false},
                                                          {"MeetmeCapable", false},
                                                          {"SIPReady", false},
                                                          {"isMeetMeOnly", true},
                                                          {"isTemporary", false}}}};
  EXPECT_EQ(fake.fakePropertyListFiles.files.at(filePath()), expected);
  EXPECT_THAT(logged(),
              ElementsAre("Configuration has been successfully saved to persistent storage: '" +
                          filePath() +
                          "'\n"
                          "{\n"
                          "    MeetmeCapable = 0;\n"
                          "    SIPReady = 0;\n"
                          "    VideoCapable = 0;\n"
                          "    isMeetMeOnly = 1;\n"
                          "    isTemporary = 0;\n"
                          "}\n"));
}

TEST_F(ConfigurationFile, SavingWritesWhatIsStoredAnEmptyTextToo) {
  configuration.setAppName("Client");
  configuration.setAppVersion(321);
  configuration.setSIPDomain("");
  configuration.setLogDirectory(std::nullopt);
  configuration.setExecutablePath("/opt/client");
  configuration.setVideoCapable(true);
  EXPECT_TRUE(configuration.saveToFile());
  const PropertyList::Dictionary expected{
      {"PublishedConfiguration", PropertyList::Dictionary{{"AppName", "Client"},
                                                          {"AppVersion", 321},
                                                          {"SIPDomain", ""},
                                                          {"ExecutablePath", "/opt/client"},
                                                          {"VideoCapable", true},
                                                          {"MeetmeCapable", false},
                                                          {"SIPReady", false},
                                                          {"isMeetMeOnly", true},
                                                          {"isTemporary", false}}}};
  EXPECT_EQ(fake.fakePropertyListFiles.files.at(filePath()), expected);
}

TEST_F(ConfigurationFile, ASavedRecordIsLoadedAsItWas) {
  configuration.setAppName("Client");
  configuration.setMeetMeOnly(false);
  configuration.setTemporary(true);
  ASSERT_TRUE(configuration.saveToFile());
  configuration.clear();
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appName(), "Client");
  EXPECT_FALSE(configuration.isMeetMeOnly());
  EXPECT_TRUE(configuration.isTemporary());
}

TEST_F(ConfigurationFile, AFailedSaveIsReported) {
  fake.fakePropertyListFiles.failsToWrite = true;
  EXPECT_FALSE(configuration.saveToFile());
  EXPECT_THAT(logged(), ElementsAre("Failed to save configuration to persistent storage: '" +
                                    filePath() + "'"));
}

TEST_F(ConfigurationFile, RemovingNoFileIsASuccessThatLogsNothing) {
  EXPECT_TRUE(configuration.removeFile());
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(ConfigurationFile, RemovingDeletesTheFile) {
  const std::string path = configuration.persistentFilePath().value();
  library.write("Preferences/group.com.brelto.orvanta.plist", "x");
  ASSERT_TRUE(std::filesystem::exists(path));
  EXPECT_TRUE(configuration.removeFile());
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(ConfigurationFile, AFailedRemovalIsReportedAndDeletesNothing) {
  std::filesystem::create_directories(filePath() + "/inner");
  EXPECT_FALSE(configuration.removeFile());
  EXPECT_THAT(logged(), ElementsAre("Failed to remove configuration persistent storage: '" +
                                    filePath() + "' error: Directory not empty"));
  EXPECT_TRUE(std::filesystem::exists(filePath() + "/inner"));
}

TEST_F(ConfigurationFile, AnEqualVersionWritesNothing) {
  publish({{"AppName", "Client"}, {"AppVersion", "1.0.0.1"}});
  configuration.updateVersionIfNeeded();
  EXPECT_EQ(configuration.appName(), "Client");
  EXPECT_THAT(fake.fakePropertyListFiles.history, ElementsAre("read " + filePath()));
}

TEST_F(ConfigurationFile, AnotherVersionIsBroughtIntoLineAndSaved) {
  publish({{"AppName", "Client"}, {"AppVersion", "0.9"}, {"isTemporary", true}});
  configuration.updateVersionIfNeeded();
  EXPECT_EQ(configuration.appName(), "Vendril 1.0.0");
  EXPECT_EQ(configuration.appVersion(), "1.0.0.1");
  EXPECT_THAT(fake.fakePropertyListFiles.history,
              ElementsAre("read " + filePath(), "write " + filePath()));
  const auto messages = logged();
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(messages[1],
            "App bundleVersion inconsistent with configutaion! Updating configuration file.");
  const PropertyList& saved =
      fake.fakePropertyListFiles.files.at(filePath()).at("PublishedConfiguration");
  EXPECT_EQ(saved, (PropertyList::Dictionary{{"AppName", "Vendril 1.0.0"},
                                             {"AppVersion", "1.0.0.1"},
                                             {"VideoCapable", false},
                                             {"MeetmeCapable", false},
                                             {"SIPReady", false},
                                             {"isMeetMeOnly", false},
                                             {"isTemporary", true}}));
}

TEST_F(ConfigurationFile, AVersionThatCannotBeSavedBelowAPlainFileIsStillBroughtIntoLine) {
  blockPreferences();
  configuration.updateVersionIfNeeded();
  EXPECT_EQ(configuration.appName(), "Vendril 1.0.0");
  EXPECT_EQ(configuration.appVersion(), "1.0.0.1");
  EXPECT_THAT(
      logged(),
      ElementsAre(kNotAFolder, "Failed to load configuration from persistent storage: '(null)'",
                  "Switching to default configuration",
                  StartsWith("Configuration has been successfully loaded:"),
                  "App bundleVersion inconsistent with configutaion! Updating configuration file.",
                  kNotAFolder, "Failed to save configuration to persistent storage: '(null)'"));
  EXPECT_THAT(fake.fakePropertyListFiles.history, ElementsAre("parse"));
}

TEST_F(ConfigurationFile, AnUnsetVersionComparesAsTheEmptyText) {
  publish({{"AppName", "Client"}});
  fake.fakeBundle.info.insert_or_assign("CFBundleVersion", "");
  configuration.updateVersionIfNeeded();
  EXPECT_EQ(configuration.appName(), "Client");
  EXPECT_THAT(fake.fakePropertyListFiles.history, ElementsAre("read " + filePath()));
}

TEST_F(ConfigurationFile, AMissingBundleVersionNeverComparesEqual) {
  publish({{"AppName", "Client"}});
  fake.fakeBundle.info.erase("CFBundleVersion");
  fake.fakeBundle.info.erase("CFBundleName");
  configuration.updateVersionIfNeeded();
  EXPECT_EQ(configuration.appName(), "(null) 1.0.0");
  EXPECT_EQ(configuration.appVersion(), "");
  EXPECT_THAT(fake.fakePropertyListFiles.history,
              ElementsAre("read " + filePath(), "write " + filePath()));
}

TEST_F(ConfigurationFile, WithoutALoggerBlockSavingAndRemovingWorkAndFailAsWithOne) {
  configuration.setLoggerBlock(nullptr);
  EXPECT_TRUE(configuration.saveToFile());
  EXPECT_EQ(fake.fakePropertyListFiles.files.count(filePath()), 1U);
  fake.fakePropertyListFiles.failsToWrite = true;
  EXPECT_FALSE(configuration.saveToFile());
  library.write("Preferences/group.com.brelto.orvanta.plist", "x");
  EXPECT_TRUE(configuration.removeFile());
  EXPECT_FALSE(std::filesystem::exists(filePath()));
  std::filesystem::create_directories(filePath() + "/inner");
  EXPECT_FALSE(configuration.removeFile());
  EXPECT_THAT(fake.fakeSystemLog.take(), IsEmpty());
}

}  // namespace
}  // namespace vendril
