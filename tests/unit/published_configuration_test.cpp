#include "config/ZQN5PublishedConfiguration.h"

#include <gmock/gmock.h>
#include <plist/plist.h>

#include <map>
#include <memory>

#include "config/ZQN5DefaultPublishedConfiguration.h"
#include "support/ConfigurationTest.h"

namespace vendril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class PublishedConfiguration : public ConfigurationTest {
 protected:
  /// "VideoCapable" after a load that found `value` under that key.
  bool videoCapableFrom(const PropertyList& value) {
    publish({{"VideoCapable", value}});
    EXPECT_TRUE(configuration.loadFromFile());
    return configuration.videoCapable();
  }

  void expectCleared() {
    EXPECT_EQ(configuration.appName(), "");
    EXPECT_EQ(configuration.appVersion(), "");
    EXPECT_EQ(configuration.SIPDomain(), "");
    EXPECT_EQ(configuration.logDirectory(), "");
    EXPECT_EQ(configuration.executablePath(), "");
    EXPECT_FALSE(configuration.videoCapable());
    EXPECT_FALSE(configuration.meetmeCapable());
    EXPECT_FALSE(configuration.SIPReady());
    EXPECT_TRUE(configuration.isMeetMeOnly());
    EXPECT_FALSE(configuration.isTemporary());
  }

  void expectDefault() {
    EXPECT_EQ(configuration.appName(), "Brelto Orvanta 3.21.0");
    EXPECT_EQ(configuration.appVersion(), "3.21.0.64.24");
    EXPECT_EQ(configuration.SIPDomain(), "");
    EXPECT_EQ(configuration.logDirectory(), "");
    EXPECT_EQ(configuration.executablePath(), "");
    EXPECT_FALSE(configuration.videoCapable());
    EXPECT_FALSE(configuration.meetmeCapable());
    EXPECT_FALSE(configuration.SIPReady());
    EXPECT_TRUE(configuration.isMeetMeOnly());
    EXPECT_FALSE(configuration.isTemporary());
  }

  /// The messages of a load that found no configuration at `path`.
  static auto fallbackMessages(const std::string& path) {
    return ElementsAre("Failed to load configuration from persistent storage: '" + path + "'",
                       "Switching to default configuration",
                       "Configuration has been successfully loaded:\n"
                       "{\n"
                       "    AppName = \"Brelto Orvanta 3.21.0\";\n"
                       "    AppVersion = 3.21.0.64.24;\n"
                       "    SIPReady = 0;\n"
                       "    isMeetMeOnly = 1;\n"
                       "    isTemporary = 0;\n"
                       "    meetmeCapable = 1;\n"
                       "    videoCapable = 1;\n"
                       "}\n");
  }
};

TEST_F(PublishedConfiguration, ANewRecordIsEmptyAndMeetMeOnly) {
  expectCleared();
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(PublishedConfiguration, ClearingBringsBackTheNewRecord) {
  configuration.setAppName("a");
  configuration.setAppVersion("b");
  configuration.setSIPDomain("c");
  configuration.setLogDirectory("d");
  configuration.setExecutablePath("e");
  configuration.setVideoCapable(true);
  configuration.setMeetmeCapable(true);
  configuration.setSIPReady(true);
  configuration.setMeetMeOnly(false);
  configuration.setTemporary(true);
  EXPECT_EQ(configuration.appName() + configuration.appVersion() + configuration.SIPDomain() +
                configuration.logDirectory() + configuration.executablePath(),
            "abcde");
  configuration.clear();
  expectCleared();
}

TEST_F(PublishedConfiguration, WithoutAFileTheDefaultIsLoaded) {
  EXPECT_TRUE(configuration.loadFromFile());
  expectDefault();
  EXPECT_THAT(logged(), fallbackMessages(filePath()));
}

TEST_F(PublishedConfiguration, AFileWithoutAPublishedConfigurationGivesTheDefault) {
  publishRoot({{"Other", PropertyList::Dictionary{{"AppName", "x"}}}});
  EXPECT_TRUE(configuration.loadFromFile());
  expectDefault();
  EXPECT_THAT(logged(), fallbackMessages(filePath()));
}

TEST_F(PublishedConfiguration, AConfigurationThatIsNotADictionaryCountsAsAbsent) {
  for (const PropertyList& value :
       {PropertyList("text"), PropertyList(1), PropertyList(PropertyList::Array{})}) {
    publishRoot({{"PublishedConfiguration", value}});
    EXPECT_TRUE(configuration.loadFromFile());
    expectDefault();
    EXPECT_THAT(logged(), fallbackMessages(filePath()));
  }
}

TEST_F(PublishedConfiguration, WithoutAPathTheFirstMessageShowsNull) {
  fake.fakeUserDirectories.directories.clear();
  EXPECT_TRUE(configuration.loadFromFile());
  expectDefault();
  const auto messages = logged();
  ASSERT_EQ(messages.size(), 4U);
  EXPECT_EQ(messages[0],
            "Failed to create persistent storage: Cannot find user preferences directory.");
  EXPECT_EQ(messages[1], "Failed to load configuration from persistent storage: '(null)'");
  EXPECT_EQ(messages[2], "Switching to default configuration");
  EXPECT_THAT(fake.fakePropertyListFiles.history, ElementsAre("parse"));
}

TEST_F(PublishedConfiguration, ADefaultThatDoesNotParseLeavesTheRecordAsItWas) {
  configuration.setAppName("kept");
  configuration.setTemporary(true);
  fake.fakePropertyListFiles.parsedData = std::nullopt;
  EXPECT_FALSE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appName(), "kept");
  EXPECT_TRUE(configuration.isTemporary());
  EXPECT_THAT(
      logged(),
      ElementsAre("Failed to load configuration from persistent storage: '" + filePath() + "'",
                  "Switching to default configuration", "Failed to load default configuration"));
}

TEST_F(PublishedConfiguration, LoadsEveryPropertyFromTheFile) {
  publish({{"AppName", "Client"},
           {"AppVersion", "9"},
           {"SIPDomain", "sip.example"},
           {"LogDirectory", "/var/log/client"},
           {"ExecutablePath", "/opt/client"},
           {"VideoCapable", true},
           {"MeetmeCapable", true},
           {"SIPReady", true},
           {"isMeetMeOnly", false},
           {"isTemporary", true}});
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appName(), "Client");
  EXPECT_EQ(configuration.appVersion(), "9");
  EXPECT_EQ(configuration.SIPDomain(), "sip.example");
  EXPECT_EQ(configuration.logDirectory(), "/var/log/client");
  EXPECT_EQ(configuration.executablePath(), "/opt/client");
  EXPECT_TRUE(configuration.videoCapable());
  EXPECT_TRUE(configuration.meetmeCapable());
  EXPECT_TRUE(configuration.SIPReady());
  EXPECT_FALSE(configuration.isMeetMeOnly());
  EXPECT_TRUE(configuration.isTemporary());
  EXPECT_THAT(logged(), ElementsAre("Configuration has been successfully loaded:\n"
                                    "{\n"
                                    "    AppName = Client;\n"
                                    "    AppVersion = 9;\n"
                                    "    ExecutablePath = /opt/client;\n"
                                    "    LogDirectory = /var/log/client;\n"
                                    "    MeetmeCapable = 1;\n"
                                    "    SIPDomain = sip.example;\n"
                                    "    SIPReady = 1;\n"
                                    "    VideoCapable = 1;\n"
                                    "    isMeetMeOnly = 0;\n"
                                    "    isTemporary = 1;\n"
                                    "}\n"));
  EXPECT_THAT(fake.fakePropertyListFiles.history, ElementsAre("read " + filePath()));
}

TEST_F(PublishedConfiguration, KeysAreMatchedCaseIncluded) {
  publish({{"appName", "x"}, {"videoCapable", true}, {"meetMeOnly", true}, {"SIPready", true}});
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appName(), "");
  EXPECT_FALSE(configuration.videoCapable());
  EXPECT_FALSE(configuration.isMeetMeOnly());
  EXPECT_FALSE(configuration.SIPReady());
}

TEST_F(PublishedConfiguration, AKeyThatIsGoneUnsetsItsProperty) {
  publish({{"ExecutablePath", "/opt/client"}, {"VideoCapable", true}});
  configuration.loadFromFile();
  ASSERT_EQ(configuration.executablePath(), "/opt/client");
  publish({{"AppName", "Client"}});
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.executablePath(), "");
  EXPECT_FALSE(configuration.videoCapable());
}

TEST_F(PublishedConfiguration, ATextReadsAsTrueWhenItSaysSo) {
  for (const char* text :
       {"YES", "yes", "true", "True", "1", "9", "007", " \t\n+1", "-2", "+00y", "Yellow", "  T"}) {
    EXPECT_TRUE(videoCapableFrom(text)) << text;
  }
}

TEST_F(PublishedConfiguration, AnyOtherTextReadsAsFalse) {
  for (const char* text :
       {"NO", "no", "false", "0", "", "000", " ", "-", "+-1", "+ 1", "on", "enabled", "x1"}) {
    EXPECT_FALSE(videoCapableFrom(text)) << text;
  }
}

TEST_F(PublishedConfiguration, ANumberReadsAsTrueUnlessItIsZero) {
  EXPECT_FALSE(videoCapableFrom(0));
  EXPECT_FALSE(videoCapableFrom(0.0));
  EXPECT_FALSE(videoCapableFrom(std::uint64_t{0}));
  EXPECT_FALSE(videoCapableFrom(false));
  EXPECT_TRUE(videoCapableFrom(2));
  EXPECT_TRUE(videoCapableFrom(-1));
  EXPECT_TRUE(videoCapableFrom(256));
  EXPECT_TRUE(videoCapableFrom(0.5));
  EXPECT_TRUE(videoCapableFrom(std::uint64_t{1} << 63U));
  EXPECT_TRUE(videoCapableFrom(true));
}

TEST_F(PublishedConfiguration, AValueOfAnotherKindReadsAsFalse) {
  EXPECT_FALSE(videoCapableFrom(Date()));
  EXPECT_FALSE(videoCapableFrom(PropertyList::Data{std::byte{1}}));
  EXPECT_FALSE(videoCapableFrom(PropertyList::Array{true}));
  EXPECT_FALSE(videoCapableFrom(PropertyList::Dictionary{{"a", true}}));
}

TEST_F(PublishedConfiguration, AValueThatIsNotATextReadsAsTheEmptyText) {
  publish({{"AppName", 5}, {"AppVersion", Date()}, {"LogDirectory", PropertyList::Array{"/tmp"}}});
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_EQ(configuration.appName(), "");
  EXPECT_EQ(configuration.appVersion(), "");
  EXPECT_EQ(configuration.logDirectory(), "");
}

TEST_F(PublishedConfiguration, TheDefaultIsParsedAfreshOnEachLoad) {
  configuration.loadFromFile();
  configuration.loadFromFile();
  EXPECT_THAT(fake.fakePropertyListFiles.history,
              ElementsAre("read " + filePath(), "parse", "read " + filePath(), "parse"));
}

TEST_F(PublishedConfiguration, WithoutALoggerBlockNothingIsLogged) {
  configuration.setLoggerBlock(nullptr);
  EXPECT_TRUE(configuration.loadFromFile());
  EXPECT_FALSE(configuration.loggerBlock());
  EXPECT_THAT(logged(), IsEmpty());
}

struct PlistRelease {
  void operator()(plist_t list) const { plist_free(list); }
};
using PlistPtr = std::unique_ptr<void, PlistRelease>;

/// The scalar entries of a dictionary: texts as they are, booleans as "true" and "false".
std::map<std::string, std::string> scalarEntries(plist_t dictionary) {
  std::map<std::string, std::string> entries;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(dictionary, &iterator);
  char* key = nullptr;
  plist_t value = nullptr;
  for (plist_dict_next_item(dictionary, iterator, &key, &value); value != nullptr;
       plist_dict_next_item(dictionary, iterator, &key, &value)) {
    if (plist_get_node_type(value) == PLIST_STRING) {
      entries[key] = plist_get_string_ptr(value, nullptr);
    } else if (plist_get_node_type(value) == PLIST_BOOLEAN) {
      entries[key] = plist_bool_val_is_true(value) != 0 ? "true" : "false";
    }
    std::free(key);
  }
  std::free(iterator);
  return entries;
}

TEST(DefaultPublishedConfiguration, IsABinaryPropertyListOfExactlySevenEntries) {
  const char* const bytes = reinterpret_cast<const char*>(ZQN5DefaultPublishedConfiguration_plist);
  EXPECT_EQ(std::string(bytes, 8), "bplist00");
  plist_t parsed = nullptr;
  plist_from_bin(bytes, ZQN5DefaultPublishedConfiguration_plist_len, &parsed);
  const PlistPtr root(parsed);
  ASSERT_NE(root, nullptr);
  ASSERT_EQ(plist_get_node_type(root.get()), PLIST_DICT);
  EXPECT_EQ(plist_dict_get_size(root.get()), 7U);
  EXPECT_THAT(scalarEntries(root.get()),
              UnorderedElementsAre(Pair("AppName", "Brelto Orvanta 3.21.0"),
                                   Pair("AppVersion", "3.21.0.64.24"), Pair("isMeetMeOnly", "true"),
                                   Pair("SIPReady", "false"), Pair("isTemporary", "false"),
                                   Pair("videoCapable", "true"), Pair("meetmeCapable", "true")));
}

}  // namespace
}  // namespace vendril
