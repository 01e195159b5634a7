#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "platform/freedesktop/PlistFiles.h"
#include "support/JsonText.h"
#include "support/ToolFixture.h"

namespace vendril {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kEntry = "com.brelto.vendril.desktop";

/// The commands of vendrilctl, in text and in JSON, on a healthy and on a broken desktop.
class ToolCommands : public ToolFixture {
 protected:
  const ChildProcess::Environment noBus{{"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                                        {"XDG_RUNTIME_DIR", agent.home().root().string()}};

  void installRival() const {
    files.application("rival", "MimeType=x-scheme-handler/vendril;x-scheme-handler/mervale;\n");
    ASSERT_EQ(
        InstalledAgent::run({"update-desktop-database", agent.home().data() / "applications"}), 0);
  }

  /// One line for each field: "name", blanks, "value".
  static std::string field(const std::string& name, const std::string& value) {
    return name + std::string(name.size() < 14 ? 14 - name.size() : 0, ' ') + value + "\n";
  }

  std::string publishedText(const std::string& key) const {
    const auto root = PlistFiles().dictionaryWithContentsOfFile(agent.configurationPath());
    return root ? textAt(*root->at("PublishedConfiguration").get<Object>(), key) : "no file";
  }
};

// open

TEST_F(ToolCommands, OpenStartsTheAgentAndTheReportArrives) {
  const Object answer = json({"open", link("7")});
  EXPECT_EQ(textAt(answer, "verdict"), "handed-over") << description(answer);
  EXPECT_EQ(answer.at("started"), PropertyList(true));
  EXPECT_EQ(answer.at("process"), PropertyList(std::int64_t{agent.ownerProcess().value_or(-1)}));
  EXPECT_EQ(textAt(answer, "expected"), "would-send");
  ASSERT_TRUE(portal.waitForRequests(1)) << agent.activatedLog();
  const ProgramRun text = run({"open", link("8")});
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.out, StartsWith("the running agent has taken the link\n"));
  ASSERT_TRUE(portal.waitForRequests(2));
  EXPECT_EQ(arrivedSessions(), (std::multiset<std::string>{"7", "8"}));
}

TEST_F(ToolCommands, OpenSaysWhoGetsTheLinkWhenItIsClicked) {
  installRival();
  const auto process = agent.startAndWait();
  ASSERT_EQ(run({"unregister", "vendril"}).status, 0);
  EXPECT_EQ(textAt(json({"open", link("7")}), "handler"), "rival");
  EXPECT_THAT(run({"open", link("7")}).out,
              HasSubstr("a click on such a link goes to rival instead\n"));
}

TEST_F(ToolCommands, OpenSaysWhenTheLinkWillLeadToNoReport) {
  const ProgramRun text = run({"open", "vendril://join"});
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.out, HasSubstr("no report is sent for it: the link names no portalURI\n"));
  EXPECT_EQ(textAt(json({"open", "vendril://join"}), "expected"), "no-portal-uri");
}

TEST_F(ToolCommands, OpenOfAForeignLinkHandsNothingOver) {
  const ProgramRun text = run({"open", "https://portal.example/"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, StartsWith("the link is in none of the agent's schemes"));
  EXPECT_EQ(textAt(json({"open", "https://portal.example/"}), "verdict"), "foreign-scheme");
  EXPECT_EQ(agent.ownerProcess(), std::nullopt);
}

TEST_F(ToolCommands, OpenDoesNotWaitForeverForAStoppedAgent) {
  const auto process = agent.startAndWait();
  process->signal(SIGSTOP);
  const ProgramRun text = run({"open", "--timeout", "0.3", link("7")});
  EXPECT_EQ(text.status, 3);
  EXPECT_THAT(text.out, StartsWith("the agent has not answered in time\n"));
  EXPECT_EQ(textAt(json({"open", "--timeout", "0.3", link("7")}), "verdict"), "not-answering");
  process->signal(SIGCONT);
}

TEST_F(ToolCommands, OpenSaysThatThereIsNoBusOrNoService) {
  const ProgramRun text = run({"open", link("7")}, noBus);
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, AllOf(StartsWith("there is no session bus"), HasSubstr(" status\n")));
  EXPECT_EQ(textAt(json({"open", link("7")}, noBus), "verdict"), "no-bus");
  std::filesystem::remove(agent.home().data() / "dbus-1/services/com.brelto.vendril.service");
  ASSERT_TRUE(runMainLoopUntil([this] {
    return textAt(json({"open", link("7")}), "verdict") == "not-startable";
  }));
  EXPECT_THAT(run({"open", link("7")}).out, StartsWith("the bus does not know how to start"));
}

TEST_F(ToolCommands, OpenSaysThatTheAgentEndedAtOnce) {
  installRival();
  writeFile(associations, "[Default Applications]\nx-scheme-handler/vendril=rival.desktop\nbad\n");
  EXPECT_EQ(textAt(json({"open", link("7")}), "verdict"), "ended");
}

TEST_F(ToolCommands, OpenPassesOnWhatTheBusSaysAboutAServiceThatCannotBeStarted) {
  agent.bus().addService("com.brelto.vendril", "/nonexistent/vendril");
  const ProgramRun text = run({"open", link("7")});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, StartsWith("the bus could not hand the link over: "));
  EXPECT_EQ(textAt(json({"open", link("7")}), "verdict"), "refused");
}

// explain

TEST_F(ToolCommands, ExplainShowsTheVeryRequestThatTheAgentThenSends) {
  const Object answer = json({"explain", link("a+c d")});
  const Object plain = json({"explain", link("7")});
  EXPECT_EQ(textAt(plain, "verdict"), "would-send") << description(plain);
  EXPECT_EQ(textAt(plain, "session_id"), "7");
  EXPECT_EQ(textAt(plain, "portalURI"), portal.url("/report") + "?session_id=7");
  EXPECT_EQ(portal.requests().size(), 0U);
  EXPECT_EQ(agent.ownerProcess(), std::nullopt) << "explaining starts nobody";

  ASSERT_EQ(run({"open", link("7")}).status, 0);
  ASSERT_TRUE(portal.waitForRequests(1));
  const TestPortal::Request sent = portal.requests().at(0);
  const Object& explained = *plain.at("request").get<Object>();
  EXPECT_EQ(textAt(explained, "method"), sent.method);
  EXPECT_EQ(textAt(explained, "body"), sent.body);
  EXPECT_EQ(textAt(*explained.at("headers").get<Object>(), "Content-Type"),
            sent.header("Content-Type"));
  EXPECT_EQ(textAt(plain, "report"), sent.formFields.find("data")->second);
}

TEST_F(ToolCommands, ExplainSaysWhyALinkLeadsToNoRequest) {
  const std::map<std::string, std::string> links{
      {"https://portal.example/?portalURI=http://p?session_id=7", "foreign-scheme"},
      {"vendril:portalURI=http://p?session_id=7 8", "not-a-url"},
      {"vendril:portalURI=http://p?session_id=%zz", "bad-escape"},
      {"vendril:portalURI=http://p?session_id=%ff", "bad-escape"},
      {"vendril:join?session_id=7", "no-portal-uri"},
      {"vendril:?portalURI=http://p?session=7", "no-session-id"},
      {"vendril:?portalURI=http://p%20q?session_id=7", "bad-portal-uri"},
      {"vendril:?portalURI=ftp://p?session_id=7", "bad-portal-uri"},
      {"vendril:?portalURI=http:///x?session_id=7", "bad-portal-uri"},
      {"vendril:?portalURI=https:?session_id=7", "bad-portal-uri"}};
  for (const auto& [link, verdict] : links) {
    const Object answer = json({"explain", link});
    EXPECT_EQ(textAt(answer, "verdict"), verdict) << link;
    const ProgramRun text = run({"explain", link});
    EXPECT_EQ(text.status, 1) << link;
    EXPECT_THAT(text.out, StartsWith(field("verdict", verdict)));
    EXPECT_THAT(text.out, HasSubstr(field("summary", textAt(answer, "summary"))));
  }
}

TEST_F(ToolCommands, ExplainShowsTheFieldsAsTextWithTheOtherSchemeToo) {
  const ProgramRun text = run({"explain", "MERVALE:portalURI=http://p?session_id=7"});
  EXPECT_EQ(text.status, 0) << text.out;
  EXPECT_THAT(text.out,
              AllOf(HasSubstr(field("verdict", "would-send")),
                    HasSubstr(field("scheme", "mervale")), HasSubstr(field("session_id", "7")),
                    HasSubstr(field("request", "POST http://p?session_id=7"))));
}

// report

TEST_F(ToolCommands, ReportIsWhatAPortalWouldGet) {
  const ProgramRun text = run({"report"});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out,
            R"({"appName":"Brelto Orvanta 4.0","appVersion":"4.0.1","isMeetMeOnly":false,)"
            R"("meetmeCapable":1,"videoCapable":1,"SIPready":1,"SIPDomain":"sip.example.com"})"
            "\n");
  EXPECT_EQ(textAt(json({"report"}), "report") + "\n", text.out);
  std::filesystem::remove(client);
  EXPECT_THAT(run({"report"}).out, HasSubstr(R"("videoCapable":0)"));
  EXPECT_THAT(run({"report", "--verbose"}).err,
              HasSubstr("Failed to find Brelto Orvanta executable: '" + client + "'\n"));
  EXPECT_THAT(run({"report", "--skip-search"}).out, HasSubstr(R"("videoCapable":1)"));
}

TEST_F(ToolCommands, ReportThatCannotBeMadeIsSaidToBeNone) {
  ASSERT_TRUE(PlistFiles().writeDictionary(
      {{"PublishedConfiguration", Object{{"AppName", Date()}}}}, agent.configurationPath()));
  const ProgramRun text = run({"report"});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.out, "there is no client-info report\n");
  EXPECT_THAT(text.err, HasSubstr("Serialization to JSON failed with error: Object is invalid"));
  EXPECT_EQ(textAt(json({"report"}), "verdict"), "no-report");
}

// config

TEST_F(ToolCommands, ConfigShowTellsTheRecordAndWhereItIsFrom) {
  const Object answer = json({"config", "show"});
  EXPECT_EQ(textAt(answer, "verdict"), "published");
  EXPECT_EQ(textAt(answer, "source"), "file");
  EXPECT_EQ(textAt(answer, "path"), agent.configurationPath());
  EXPECT_EQ(textAt(answer, "client"), "found");
  const Object& record = *answer.at("record").get<Object>();
  EXPECT_EQ(textAt(record, "SIPDomain"), "sip.example.com");
  EXPECT_EQ(record.at("VideoCapable"), PropertyList(true));
  const ProgramRun text = run({"config", "show"});
  EXPECT_THAT(text.out,
              AllOf(HasSubstr(field("SIPDomain", "sip.example.com")),
                    HasSubstr(field("VideoCapable", "true")), HasSubstr(field("client", "found"))));
}

TEST_F(ToolCommands, ConfigShowOfAMalformedFileFailsWithTheDefaultInEffect) {
  writeFile(agent.configurationPath(), "<plist>");
  const ProgramRun text = run({"config", "show"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.out, AllOf(HasSubstr(field("verdict", "malformed")),
                              HasSubstr(field("AppVersion", "3.21.0.64.24"))));
  EXPECT_EQ(textAt(json({"config", "show"}), "source"), "default");
}

TEST_F(ToolCommands, ConfigSaveWritesChangesAndKeepsTheRest) {
  const Object answer =
      json({"config", "save", "ExecutablePath=/opt/orvanta", "SIPDomain=", "VideoCapable=false"});
  EXPECT_EQ(textAt(answer, "verdict"), "done") << description(answer);
  EXPECT_EQ(publishedText("ExecutablePath"), "/opt/orvanta");
  EXPECT_EQ(publishedText("SIPDomain"), "no text");
  EXPECT_EQ(publishedText("AppVersion"), "4.0.1");
  EXPECT_EQ(json({"config", "show"}).at("record").get<Object>()->at("VideoCapable"),
            PropertyList(false));
  EXPECT_EQ(run({"config", "save"}).out, "saved " + agent.configurationPath() + "\n");
}

TEST_F(ToolCommands, ConfigSaveRefusesWhatIsNoChangeAndWritesNothing) {
  const std::string before = readFile(agent.configurationPath());
  for (const char* change : {"Unknown=1", "AppName", "VideoCapable=maybe"}) {
    const ProgramRun text = run({"config", "save", change});
    EXPECT_EQ(text.status, 2) << change;
    EXPECT_THAT(text.err, HasSubstr(std::string("'") + change + "'"));
  }
  EXPECT_EQ(readFile(agent.configurationPath()), before);
}

TEST_F(ToolCommands, ConfigThatCannotBeWrittenIsAFailureWithTheReason) {
  std::filesystem::remove_all(agent.home().config() / "brelto");
  writeFile(agent.home().config() / "brelto/Preferences", "");
  for (const char* command : {"save", "update-version"}) {
    const ProgramRun text = run({"config", command});
    EXPECT_EQ(text.status, 1) << command;
    EXPECT_THAT(text.err, HasSubstr("Failed to create persistent storage: "));
    EXPECT_EQ(textAt(json({"config", command}), "verdict"), "failed");
  }
}

TEST_F(ToolCommands, ConfigRemoveDeletesTheFile) {
  EXPECT_EQ(run({"config", "remove"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(agent.configurationPath()));
  EXPECT_EQ(textAt(json({"config", "remove"}), "verdict"), "done") << "it is gone already";
  std::filesystem::create_directories(agent.configurationPath() + "/not/empty");
  EXPECT_EQ(textAt(json({"config", "remove"}), "verdict"), "failed");
  EXPECT_EQ(run({"config", "remove"}).status, 1);
}

TEST_F(ToolCommands, ConfigUpdateVersionStoresTheAgentsVersion) {
  EXPECT_EQ(run({"config", "update-version"}).status, 0);
  EXPECT_EQ(publishedText("AppVersion"), "1.0.0.1");
  EXPECT_EQ(publishedText("AppName"), "Vendril 1.0.0");
  EXPECT_EQ(textAt(json({"config", "update-version"}), "verdict"), "done");
}

// register, unregister

TEST_F(ToolCommands, UnregisterAndRegisterChangeTheDefaultHandlers) {
  installRival();
  ASSERT_EQ(run({"register"}).status, 0);
  const Object one = json({"unregister", "vendril"});
  EXPECT_EQ(textAt(one, "verdict"), "done") << description(one);
  EXPECT_EQ(textAt(*one.at("handlers").get<Object>(), "vendril"), "rival");
  EXPECT_EQ(verdicts().at("handler-mervale"), "default");
  EXPECT_EQ(run({"unregister"}).out, field("mervale", "rival") + field("vendril", "rival"));
  const Object both = json({"register"});
  EXPECT_EQ(textAt(*both.at("handlers").get<Object>(), "vendril"), "com.brelto.vendril");
  EXPECT_EQ(verdicts().at("handler-mervale"), "default");
}

TEST_F(ToolCommands, UnregisterFailsWhereNobodyElseCouldBeTheHandler) {
  const ProgramRun text = run({"unregister"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.err, HasSubstr("Failed to unregister from 'mervale' scheme\n"));
  EXPECT_THAT(text.out, HasSubstr("No other program opens these links"));
  EXPECT_EQ(textAt(json({"unregister", "http"}), "verdict"), "failed");
  EXPECT_THAT(run({"unregister", "http"}).err, HasSubstr("Invalid 'http' scheme has been found\n"));
}

TEST_F(ToolCommands, RegisterFailsOnAListThatDoesNotParse) {
  installRival();
  writeFile(associations, "no entry\n");
  const ProgramRun text = run({"register"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.err,
              HasSubstr("Failed to register for 'mervale' scheme. Status=4294956486ll\n"));
  EXPECT_EQ(textAt(json({"register"}), "verdict"), "failed");
  EXPECT_EQ(readFile(associations), "no entry\n");
}

// login-item

TEST_F(ToolCommands, LoginItemGoesOnAndOffForTheAgentAndNotForTheTool) {
  EXPECT_EQ(textAt(json({"login-item", "status"}), "verdict"), "off");
  EXPECT_EQ(textAt(json({"login-item", "on"}), "verdict"), "on");
  EXPECT_THAT(readFile(autostart / kEntry), HasSubstr("Exec=" + InstalledAgent::program() + "\n"));
  EXPECT_EQ(run({"login-item", "on"}).out, "the agent starts at login\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(autostart),
                          std::filesystem::directory_iterator()),
            1);
  EXPECT_EQ(run({"login-item", "off"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(autostart / kEntry));
}

TEST_F(ToolCommands, LoginItemThatCannotBeWrittenIsAFailure) {
  writeFile(autostart, "");
  const ProgramRun text = run({"login-item", "on"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.err, HasSubstr("Considering this as a failure."));
  EXPECT_EQ(textAt(json({"login-item", "on"}), "verdict"), "off");
}

TEST_F(ToolCommands, LoginItemForAProgramThatIsNotThereIsRefused) {
  const auto bin = agent.home().root() / "lone/bin";
  std::filesystem::create_directories(bin);
  std::filesystem::copy_file(program(), bin / "vendrilctl");
  const ProgramRun text = runProgram({(bin / "vendrilctl").string(), "login-item", "on"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.err, HasSubstr(bin.string() + "/vendril is not there or cannot be run\n"));
  EXPECT_FALSE(std::filesystem::exists(autostart));
}

TEST_F(ToolCommands, LoginItemCleanRemovesStaleItemsAlone) {
  files.autostart("old.desktop", desktopEntryText("Brelto Mervale", "/nonexistent/mervale"));
  files.autostart("other.desktop", desktopEntryText("Other", "/nonexistent/other"));
  EXPECT_EQ(json({"login-item", "status"}).at("stale").get<PropertyList::Array>()->size(), 1U);
  EXPECT_THAT(run({"login-item", "status"}).out, HasSubstr("Brelto Mervale ("));
  EXPECT_EQ(json({"login-item", "clean"}).at("stale").get<PropertyList::Array>()->size(), 0U);
  EXPECT_TRUE(std::filesystem::exists(autostart / "other.desktop"));
  EXPECT_FALSE(std::filesystem::exists(autostart / "old.desktop"));
  EXPECT_EQ(run({"login-item", "clean"}).status, 0);
}

// The command line.

TEST_F(ToolCommands, CommandLineThatIsNotUnderstoodEndsWithTwo) {
  for (const Words& words :
       {Words{}, Words{"unknown"}, Words{"open"}, Words{"config"},
        Words{"log", "--follow", "--json"}, Words{"status", "--unknown"},
        Words{"open", "--timeout", "nan", link("7")}, Words{"log", "-n", "4000000000"}}) {
    const ProgramRun text = run(words);
    EXPECT_EQ(text.status, 2) << ::testing::PrintToString(words);
    EXPECT_THAT(text.err, StartsWith("vendrilctl: "));
    EXPECT_EQ(text.out, "");
  }
}

TEST_F(ToolCommands, HelpAndVersionAreToldOnStandardOutput) {
  EXPECT_EQ(run({"--version"}).out, "vendrilctl 1.0.0.1\n");
  EXPECT_EQ(run({"--version"}).status, 0);
  EXPECT_THAT(run({"--help"}).out, HasSubstr("login-item"));
  EXPECT_THAT(run({"open", "--help"}).out, HasSubstr("--timeout"));
  EXPECT_EQ(run({"open", "--help"}).status, 0);
}

TEST_F(ToolCommands, AgentStillIgnoresTheWordsOfTheTool) {
  const auto process = agent.startAndWait({"status", "--json", "--help"});
  EXPECT_EQ(process->out(), "");
  EXPECT_EQ(agent.ownerProcess(), process->pid());
}

}  // namespace
}  // namespace vendril
