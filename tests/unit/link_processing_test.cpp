#include "support/DelegateFixture.h"

namespace vendril {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class LinkProcessing : public DelegateFixture {
 protected:
  LinkProcessing() { launch(); }

  std::optional<ZQN5VendrilAppDelegate::Parameters> parse(const std::string& link) {
    host.fakeSystemLog.take();
    const std::optional<Url> url = Url::parse(link);
    EXPECT_TRUE(url) << link << " is not a URL";
    return url ? delegate->parse(*url) : std::nullopt;
  }

  void expectParsed(const std::string& link, const std::string& portalUri,
                    const std::string& sessionId) {
    const auto parameters = parse(link);
    ASSERT_TRUE(parameters) << link << ": " << ::testing::PrintToString(delegateMessages());
    EXPECT_EQ(*parameters, (ZQN5VendrilAppDelegate::Parameters{{"portalURI", portalUri},
                                                               {"session_id", sessionId}}));
    EXPECT_THAT(delegateMessages(), IsEmpty());
  }

  void expectFailure(const std::string& link, const std::string& parameter,
                     const std::string& shown) {
    EXPECT_EQ(parse(link), std::nullopt);
    EXPECT_THAT(delegateMessages(), ElementsAre("Parsing failed: Parameter " + parameter +
                                                " not found in URL: " + shown));
  }
};

// What `parse` takes out of a link.

TEST_F(LinkProcessing, PortalUrlIsEverythingAfterItsNameAndIsKeptWhole) {
  expectParsed("vendril://join?portalURI=http://p.example/x?lang=en&session_id=7&x=1",
               "http://p.example/x?lang=en&session_id=7&x=1", "7");
}

TEST_F(LinkProcessing, LinkIsDecodedBeforeItIsSplit) {
  expectParsed("mervale:?portalURI=http%3A%2F%2Fp.example%2F%3Fsession_id%3D42",
               "http://p.example/?session_id=42", "42");
}

TEST_F(LinkProcessing, LinkWithoutPortalUriFailsWithTheUndecodedLink) {
  expectFailure("vendril:join?portal%2DURI%3D1&session_id=7", "portalURI",
                "vendril:join?portal%2DURI%3D1&session_id=7");
  expectFailure("vendril:join%20now?session_id=7", "portalURI", "vendril:join%20now?session_id=7");
}

TEST_F(LinkProcessing, PortalUriWithNothingBehindItFails) {
  expectFailure("vendril:?portalURI=", "portalURI", "vendril:?portalURI=");
  expectFailure("vendril:?portalURI", "portalURI", "vendril:?portalURI");
}

TEST_F(LinkProcessing, PortalUriFollowedByAnySingleCharacterFails) {
  expectFailure("vendril:?portalURIx", "portalURI", "vendril:?portalURIx");
  expectFailure("vendril:?portalURI%C3%A4", "portalURI", "vendril:?portalURI%C3%A4");
}

TEST_F(LinkProcessing, CharacterAfterTheNameIsSkippedUnexamined) {
  expectParsed("vendril:?portalURI%C3%A4http://p?session_id=7", "http://p?session_id=7", "7");
  expectParsed("vendril:?portalURI:http://p?session_id=7", "http://p?session_id=7", "7");
}

TEST_F(LinkProcessing, NameIsFoundInsideALongerWordAndAnywhereInTheLink) {
  expectParsed("vendril:myportalURI=http://p?session_id=7", "http://p?session_id=7", "7");
}

TEST_F(LinkProcessing, NameOfThePortalUriIsCaseSensitive) {
  expectFailure("vendril:?portaluri=http://p?session_id=7", "portalURI",
                "vendril:?portaluri=http://p?session_id=7");
}

TEST_F(LinkProcessing, PortalUrlWithoutSeparatorsFailsForSessionIdAndIsShown) {
  expectFailure("vendril:?portalURI=http%3A%2F%2Fp.example%2Fsession_id=7", "session_id",
                "http://p.example/session_id=7");
}

TEST_F(LinkProcessing, MalformedSessionPiecesArePassedOver) {
  expectParsed("vendril:?portalURI=http://p?session_id=&session_id=a=b&=5&session_id=9",
               "http://p?session_id=&session_id=a=b&=5&session_id=9", "9");
}

TEST_F(LinkProcessing, OnlyTheFirstValidSessionIdCounts) {
  expectParsed("vendril:?portalURI=http://p?session_id=1&session_id=2",
               "http://p?session_id=1&session_id=2", "1");
}

TEST_F(LinkProcessing, SessionIdIsComparedCaseSensitively) {
  expectFailure("vendril:?portalURI=http://p?Session_ID=4", "session_id", "http://p?Session_ID=4");
}

TEST_F(LinkProcessing, FirstPieceIsNeverExamined) {
  expectFailure("vendril:?portalURI=session_id=4?x=1", "session_id", "session_id=4?x=1");
}

TEST_F(LinkProcessing, SessionIdBeforeThePortalUriIsNotSeen) {
  expectFailure("vendril:?session_id=3&portalURI=http://p?x=1", "session_id", "http://p?x=1");
  expectParsed("vendril:?session_id=3&portalURI=http://p?session_id=4", "http://p?session_id=4",
               "4");
}

TEST_F(LinkProcessing, SecondQuestionMarkSeparatesParametersToo) {
  expectParsed("vendril:?portalURI=http://p?x=1?session_id=8", "http://p?x=1?session_id=8", "8");
  expectParsed("vendril:?portalURI=http://p?session_id=8?x=1", "http://p?session_id=8?x=1", "8");
}

TEST_F(LinkProcessing, EscapedAmpersandInThePortalUrlSeparatesParameters) {
  expectParsed("vendril:?portalURI=http://p?x=1%26session_id=8", "http://p?x=1&session_id=8", "8");
}

TEST_F(LinkProcessing, MalformedEscapeAnywhereFailsForPortalUriWithTheLinkAsReceived) {
  for (const char* link :
       {"vendril:%zz?portalURI=http://p?session_id=7",
        "vendril:?portalURI=http://p?session_id=7%zz", "vendril:?portalURI=http://p?session_id=7%",
        "vendril:?portalURI=http://p?session_id=7%4"}) {
    expectFailure(link, "portalURI", link);
  }
}

TEST_F(LinkProcessing, EscapesThatAreNotUtf8FailForPortalUri) {
  expectFailure("vendril:?portalURI=http://p?session_id=7%FF", "portalURI",
                "vendril:?portalURI=http://p?session_id=7%FF");
}

TEST_F(LinkProcessing, SecondPortalUriBecomesPartOfTheFirstOnesValue) {
  expectParsed("vendril:?portalURI=http://p?session_id=7&portalURI=http://q",
               "http://p?session_id=7&portalURI=http://q", "7");
}

TEST_F(LinkProcessing, PlusStaysAPlus) {
  expectParsed("vendril:?portalURI=http://p?session_id=a+b", "http://p?session_id=a+b", "a+b");
}

// The record that each link logs.

TEST_F(LinkProcessing, ProcessDetailsAreLoggedInAscendingOrderOfKey) {
  host.fakeProcessInfo.argumentList = {"/opt/vendril/bin/vendril", "a b", "vendril:x"};
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
  host.fakeProcessInfo.now += std::chrono::milliseconds(61'999);
  open("vendril:x");
  const std::vector<std::string> messages = delegateMessages();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages[0],
            "Process details:\n"
            "{\n"
            "    Arguments = \"/opt/vendril/bin/vendril a b vendril:x\";\n"
            "    BundleIdentifier = com.brelto.Vendril;\n"
            "    BundleName = Vendril;\n"
            "    BundleVersion = 1.0.0.1;\n"
            "    DefaulURLHandler = 1;\n"
            "    LaunchOnLogin = 1;\n"
            "    StartTime = \"2024-01-31 13:05:09.042\";\n"
            "    Uptime = 61;\n"
            "}\n");
}

TEST_F(LinkProcessing, UptimeIsPositiveWhenTheClockWasSetBack) {
  host.fakeProcessInfo.now -= std::chrono::milliseconds(5'900);
  open("vendril:x");
  EXPECT_THAT(delegateMessages(), Contains(HasSubstr("    Uptime = 5;\n")));
}

TEST_F(LinkProcessing, DetailsAskTheLoginItemsAndTheHandlersAfresh) {
  host.fakeSessionLoginItems.items.clear();
  host.fakeLaunchServices.defaults["mervale"] = "org.example.other";
  open("vendril:x");
  EXPECT_THAT(delegateMessages(),
              Contains(AllOf(HasSubstr("DefaulURLHandler = 0;"), HasSubstr("LaunchOnLogin = 0;"))));
}

TEST_F(LinkProcessing, MissingBundleValueEndsTheLinkWithACaughtException) {
  for (const char* entry : {"CFBundleName", "CFBundleIdentifier", "CFBundleVersion"}) {
    const PropertyList::Dictionary saved = host.fakeBundle.info;
    host.fakeBundle.info.erase(entry);
    host.fakePropertyListFiles.history.clear();
    open("vendril:?portalURI=http://p?session_id=7");
    EXPECT_THAT(host.fakeSystemLog.messages().size(), 3U) << entry;
    EXPECT_THAT(delegateMessages(),
                ElementsAre(StartsWith("Caught exception NSInvalidArgumentException - ")));
    EXPECT_THAT(host.fakePropertyListFiles.history, IsEmpty()) << "no configuration is loaded";
    host.fakeBundle.info = saved;
  }
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(LinkProcessing, ApplicationGoesOnAfterACaughtException) {
  const PropertyList::Dictionary saved = host.fakeBundle.info;
  host.fakeBundle.info.erase("CFBundleName");
  open("vendril:?portalURI=http://p?session_id=7");
  host.fakeBundle.info = saved;
  open("vendril:?portalURI=http://p?session_id=8");
  EXPECT_EQ(onlyRequest().url->absoluteString(), "http://p?session_id=8");
}

// From link to request.

TEST_F(LinkProcessing, LinkBecomesAReportForThePortal) {
  open("vendril:?portalURI=http://p.example/x?session_id=7");
  const UrlRequest& request = onlyRequest();
  EXPECT_EQ(request.url->absoluteString(), "http://p.example/x?session_id=7");
  EXPECT_EQ(request.httpBody,
            "data=%7B%22appName%22:%22Brelto%20Orvanta%204.0%22,%22appVersion%22:%224.0.1%22,"
            "%22isMeetMeOnly%22:false,%22meetmeCapable%22:1,%22videoCapable%22:1,%22SIPready%22:1,"
            "%22SIPDomain%22:%22sip.example.com%22%7D&session_id=7&command=set_data");
}

TEST_F(LinkProcessing, SearchRunsByDefault) {
  std::filesystem::remove(executable);
  open("vendril:?portalURI=http://p?session_id=7");
  EXPECT_THAT(onlyRequest().httpBody.value_or(""), HasSubstr("%22videoCapable%22:0"));
}

TEST_F(LinkProcessing, DontSearchWordSkipsTheSearch) {
  std::filesystem::remove(executable);
  delegate->setSearchForBreltoOrvanta(false);
  open("vendril:?portalURI=http://p?session_id=7");
  EXPECT_THAT(onlyRequest().httpBody.value_or(""), HasSubstr("%22videoCapable%22:1"));
}

TEST_F(LinkProcessing, ConfigurationThatCannotBeLoadedDropsTheLinkSilently) {
  publish(std::nullopt);
  host.fakePropertyListFiles.parsedData.reset();
  host.fakeUserDefaults.history.clear();
  open("vendril:?portalURI=http://p?session_id=7");
  EXPECT_THAT(delegateMessages(), ElementsAre(StartsWith("Process details:")));
  EXPECT_THAT(host.fakeUserDefaults.history, IsEmpty());
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(LinkProcessing, ConfigurationThatCannotBeLoadedIsNotAskedForAReport) {
  publish(std::nullopt);
  host.fakePropertyListFiles.parsedData.reset();
  host.fakePropertyListFiles.history.clear();
  open("vendril:nothing");
  EXPECT_THAT(delegateMessages(), ElementsAre(StartsWith("Process details:")))
      << "the link is not parsed either";
  EXPECT_THAT(host.fakePropertyListFiles.history,
              ElementsAre("read " + configurationPath, "parse"));
}

TEST_F(LinkProcessing, ReportIsBuiltEvenWhenTheLinkDoesNotParse) {
  host.fakePropertyListFiles.history.clear();
  open("vendril:nothing");
  EXPECT_THAT(host.fakePropertyListFiles.history,
              ElementsAre("read " + configurationPath, "read " + configurationPath));
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(LinkProcessing, MissingReportSendsNothingAndLogsNothingMore) {
  record.insert_or_assign("AppName", Date());
  publish(record);
  open("vendril:?portalURI=http://p?session_id=7");
  EXPECT_THAT(delegateMessages(), ElementsAre(StartsWith("Process details:")));
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(LinkProcessing, ChangePublishedBetweenTwoLinksIsSeenByTheSecond) {
  open("vendril:?portalURI=http://p?session_id=7");
  record.insert_or_assign("AppVersion", "4.0.2");
  publish(record);
  open("vendril:?portalURI=http://p?session_id=8");
  ASSERT_EQ(host.fakeUrlConnection.requests.size(), 2U);
  EXPECT_THAT(host.fakeUrlConnection.requests[1].request.httpBody.value_or(""),
              HasSubstr("%224.0.2%22"));
}

// The log follows the configuration.

TEST_F(LinkProcessing, LoadRedirectsTheLogAndStoresTheDirectory) {
  EXPECT_TRUE(delegate->load());
  EXPECT_EQ(delegate->logger()->path(), logDirectory + "/Vendril.log");
  EXPECT_EQ(host.fakeUserDefaults.synchronized.at("LogDirectory"), logDirectory);
}

TEST_F(LinkProcessing, LoadStoresTheDirectoryOnEveryLinkAndFlushes) {
  EXPECT_TRUE(delegate->load());
  host.fakeUserDefaults.history.clear();
  EXPECT_TRUE(delegate->load());
  EXPECT_THAT(host.fakeUserDefaults.history,
              ElementsAre("set LogDirectory=" + logDirectory, "synchronize"));
}

TEST_F(LinkProcessing, UnchangedLogDirectoryIsNotPreparedAgain) {
  EXPECT_TRUE(delegate->load());
  const std::string path = logDirectory + "/Vendril.log";
  std::filesystem::resize_file(path, 4'194'305);
  host.fakeSystemLog.take();
  EXPECT_TRUE(delegate->load());
  EXPECT_EQ(std::filesystem::file_size(path), 4'194'305U);
  EXPECT_THAT(host.fakeSystemLog.take(), Not(Contains(StartsWith("[ZQN5SimpleLogger]"))));
}

TEST_F(LinkProcessing, ConfigurationWithoutALogDirectoryEndsWritingToAFile) {
  EXPECT_TRUE(delegate->load());
  record.erase("LogDirectory");
  publish(record);
  host.fakeSystemLog.take();
  EXPECT_TRUE(delegate->load());
  EXPECT_EQ(delegate->logger()->path(), std::nullopt);
  EXPECT_THAT(host.fakeSystemLog.take(), Contains("[ZQN5SimpleLogger] Removing log file"));
  EXPECT_EQ(host.fakeUserDefaults.values.at("LogDirectory"), "");
}

TEST_F(LinkProcessing, LogDirectoryThatCannotBePreparedEndsWritingToAFile) {
  EXPECT_TRUE(delegate->load());
  writeFile(home.root() / "file", "");
  record.insert_or_assign("LogDirectory", (home.root() / "file").string());
  publish(record);
  EXPECT_TRUE(delegate->load());
  EXPECT_EQ(delegate->logger()->path(), std::nullopt);
}

TEST_F(LinkProcessing, FailedLoadLeavesLoggerAndStoredDirectoryAsTheyAre) {
  EXPECT_TRUE(delegate->load());
  publish(std::nullopt);
  host.fakePropertyListFiles.parsedData.reset();
  EXPECT_FALSE(delegate->load());
  EXPECT_EQ(delegate->logger()->path(), logDirectory + "/Vendril.log");
  EXPECT_EQ(host.fakeUserDefaults.values.at("LogDirectory"), logDirectory);
}

}  // namespace
}  // namespace vendril
