#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>

#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "portal/PortalServer.h"
#include "support/MainLoop.h"
#include "support/PortalProcess.h"
#include "support/UniqueFd.h"

namespace vendril {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kProgram = VENDRIL_BUILD_DIR "/portal/vendril-portal";
constexpr const char* kForm = "application/x-www-form-urlencoded";
constexpr const char* kBody = "data=%7B%22appName%22:%22x%22%7D&session_id=4711&command=set_data";

/// The portal's program, and clients.
class PracticePortal : public ::testing::Test {
 protected:
  httplib::Client client() const {
    httplib::Client result("127.0.0.1", portal.port());
    result.set_read_timeout(kTestDeadline);
    return result;
  }

  httplib::Result post(const std::string& path, const std::string& body = kBody,
                       const httplib::Headers& headers = {}) const {
    return client().Post(path, headers, body, kForm);
  }

  /// The status of what a GET is answered with, be it a stream.
  int statusOf(const std::string& path, const httplib::Headers& headers) const {
    int status = 0;
    client().Get(
        path, headers,
        [&status](const httplib::Response& response) {
          status = response.status;
          return false;
        },
        [](const char*, std::size_t) { return true; });
    return status;
  }

  /// What the event stream says until it holds `text`; all of it when it ends before.
  std::string eventsUntil(const std::string& text, const httplib::Headers& headers = {}) const {
    std::string events;
    client().Get("/events", headers, [&](const char* data, std::size_t size) {
      events.append(data, size);
      return events.find(text) == std::string::npos;
    });
    return events;
  }

  // Quiet, because nobody reads what it prints.
  PortalProcess portal{kProgram, {"--slow", "1", "--text", "out of order", "--quiet"}};
};

TEST_F(PracticePortal, EachStatusIsAnsweredWithTheText) {
  for (const int status : {200, 201, 404, 500, 599}) {
    const auto answer = post("/report?answer=" + std::to_string(status));
    ASSERT_TRUE(answer) << status;
    EXPECT_EQ(answer->status, status);
    EXPECT_EQ(answer->body, "out of order") << status;
  }
}

TEST_F(PracticePortal, NoContentComesWithoutABody) {
  const auto answer = post("/report?answer=204");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 204);
  EXPECT_EQ(answer->body, "");
}

TEST_F(PracticePortal, RedirectNamesAPlace) {
  const auto answer = post("/report?answer=redirect");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 302);
  EXPECT_EQ(answer->get_header_value("Location"), "/");
}

TEST_F(PracticePortal, SlowAnswerComesLateAndHoldsUpNoOther) {
  const auto start = std::chrono::steady_clock::now();
  bool slowIsAnswered = false;
  std::jthread slow([&] {
    const auto answer = post("/report?answer=slow");
    slowIsAnswered = answer && answer->status == 200;
  });
  EXPECT_TRUE(post("/report"));
  slow.join();
  EXPECT_TRUE(slowIsAnswered);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(PracticePortal, ResetIsSeenAsAResetConnection) {
  ChildProcess curl({"curl", "--silent", "--show-error", "--noproxy", "*", "--data", kBody,
                     portal.url("/report?answer=reset")});
  EXPECT_EQ(curl.waitForExit(), 56);
  EXPECT_THAT(curl.err(), HasSubstr("Connection reset by peer"));
  EXPECT_THAT(eventsUntil("\n\n"), HasSubstr(R"("answer":"connection reset","successful":false)"));
}

TEST_F(PracticePortal, UnknownAnswerIsABadRequestThatIsShownAllTheSame) {
  const auto answer = post("/report?answer=maybe");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 400);
  EXPECT_THAT(answer->body, HasSubstr("redirect, slow, reset or a status"));
  EXPECT_THAT(eventsUntil("\n\n"), HasSubstr("there is no such answer"));
}

TEST_F(PracticePortal, AddressWithoutAnAnswerGetsTheUsualOne) {
  EXPECT_EQ(post("/any/path?session_id=7")->status, 200);
  const PortalProcess other(kProgram, {"--answer", "503"});
  httplib::Client client("127.0.0.1", other.port());
  EXPECT_EQ(client.Post("/", kBody, kForm)->status, 503);
  EXPECT_EQ(client.Post("/?answer=200", kBody, kForm)->status, 200);
}

TEST_F(PracticePortal, ReportIsStreamedWithItsDecodedFieldsAndItsRawBody) {
  post("/report?session_id=4711");
  EXPECT_THAT(eventsUntil("\n\n"),
              AllOf(StartsWith("id: 1\nevent: report\ndata: {\"number\":1,"),
                    HasSubstr(R"("method":"POST","target":"/report?session_id=4711")"),
                    HasSubstr(R"(["Content-Type","application/x-www-form-urlencoded"])"),
                    HasSubstr(R"("fields":[["data","{\"appName\":\"x\"}"],["session_id","4711"],)"
                              R"(["command","set_data"]])"),
                    HasSubstr(R"("body":"data=%7B%22appName%22:%22x%22%7D&session_id=4711&)"
                              R"(command=set_data")"),
                    Not(HasSubstr("REMOTE_ADDR"))));
}

TEST_F(PracticePortal, ReportThatArrivesLaterReachesAnOpenStream) {
  std::string events;
  std::jthread reader([&] { events = eventsUntil("\"session_id\",\"later\""); });
  post("/report", "session_id=later");
  reader.join();
  EXPECT_THAT(events, HasSubstr("id: 1\n"));
}

TEST_F(PracticePortal, Only200CountsAsASuccess) {
  for (const char* answer : {"redirect", "201", "204", "199"}) {
    post(std::string("/report?answer=") + answer);
  }
  post("/report?answer=200");
  post("/last");
  const std::string events = eventsUntil("id: 6\n");
  EXPECT_THAT(events, HasSubstr(R"("answer":"status 302","successful":false})"));
  EXPECT_THAT(events, HasSubstr(R"("answer":"status 201","successful":false})"));
  EXPECT_THAT(events, HasSubstr(R"("answer":"status 204","successful":false})"));
  EXPECT_THAT(events, HasSubstr(R"(there is no such answer","successful":false})"));
  EXPECT_THAT(events, HasSubstr(R"("answer":"status 200","successful":true})"));
}

TEST_F(PracticePortal, ReturningReaderGetsOnlyWhatItHasNotSeen) {
  post("/report", "session_id=seen");
  post("/report", "session_id=unseen");
  EXPECT_THAT(eventsUntil("\n\n", {{"Last-Event-ID", "1"}}), StartsWith("id: 2\n"));
}

TEST_F(PracticePortal, ReportIsPrintedToo) {
  PortalProcess printing(kProgram);
  httplib::Client("127.0.0.1", printing.port()).Post("/report?answer=500", kBody, kForm);
  EXPECT_TRUE(
      printing.process().waitForOut("POST /report?answer=500\n"
                                    "  Content-Type: application/x-www-form-urlencoded\n"
                                    "  data = {\"appName\":\"x\"}\n"
                                    "  session_id = 4711\n"
                                    "  command = set_data\n"
                                    "  answer: status 500\n\n"))
      << printing.process().out();
}

TEST_F(PracticePortal, EveryFileOfThePageForbidsForeignContent) {
  for (const char* path : {"/", "/page.css", "/page.js", "/icon.svg"}) {
    const auto answer = client().Get(path);
    ASSERT_TRUE(answer) << path;
    EXPECT_EQ(answer->status, 200) << path;
    EXPECT_THAT(answer->get_header_value("Content-Security-Policy"),
                AllOf(StartsWith("default-src 'none'; script-src 'self';"),
                      Not(HasSubstr("unsafe")), Not(HasSubstr("http"))))
        << path;
    EXPECT_EQ(answer->get_header_value("X-Content-Type-Options"), "nosniff") << path;
    EXPECT_THAT(answer->body, Not(HasSubstr("https://"))) << path;
  }
  EXPECT_EQ(client().Get("/other")->status, 404);
}

TEST_F(PracticePortal, OtherSitesCanNeitherReadNorSendReports) {
  EXPECT_EQ(statusOf("/events", {{"Host", "rebound.example"}}), 403);
  EXPECT_EQ(statusOf("/events", {{"Sec-Fetch-Site", "cross-site"}}), 403);
  EXPECT_EQ(statusOf("/", {{"Host", "rebound.example"}}), 403);
  EXPECT_EQ(post("/report", kBody, {{"Origin", "https://example.com"}})->status, 403);
  post("/report", "session_id=ours");
  EXPECT_THAT(eventsUntil("\n\n"), AllOf(StartsWith("id: 1\n"), HasSubstr("ours")));
}

TEST_F(PracticePortal, LargerBodyIsRefusedAndNotShown) {
  const std::string large(portal::PortalServer::kLargestBody + 1, 'x');
  EXPECT_EQ(post("/report", large)->status, 413);
  const auto chunked = client().Post(
      "/report",
      [&](std::size_t, httplib::DataSink& sink) {
        sink.write(large.data(), large.size());
        sink.done();
        return true;
      },
      kForm);
  ASSERT_TRUE(chunked);
  EXPECT_EQ(chunked->status, 413) << "of unknown length";
  EXPECT_EQ(post("/report", large.substr(1))->status, 200);
  EXPECT_THAT(eventsUntil("\n\n"), StartsWith("id: 1\n"));
}

TEST_F(PracticePortal, StreamThatNobodyReadsHoldsUpNothing) {
  const std::string body = "data=" + std::string(60'000, 'x');
  std::vector<std::unique_ptr<UniqueFd>> deaf;
  for (int i = 0; i < portal::PortalServer::kMostStreams; ++i) {
    deaf.push_back(std::make_unique<UniqueFd>(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(portal.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::connect(deaf.back()->get(), reinterpret_cast<sockaddr*>(&address), sizeof address),
              0);
    const std::string request =
        "GET /events HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(portal.port()) + "\r\n\r\n";
    ASSERT_EQ(::send(deaf.back()->get(), request.data(), request.size(), 0),
              static_cast<ssize_t>(request.size()));
  }
  for (int i = 0; i < 100; ++i) {
    const auto answer = post("/report", body);
    ASSERT_TRUE(answer) << "report " << i;
    ASSERT_EQ(answer->status, 200);
  }
  // The portal gives deaf readers up, and then has a place for one that listens.
  EXPECT_TRUE(runMainLoopUntil([this] { return eventsUntil("id: ").starts_with("id: "); }));
}

TEST_F(PracticePortal, StreamsBeyondTheBoundAreRefused) {
  std::vector<std::jthread> readers;
  std::atomic<int> open = 0;
  std::atomic<int> refused = 0;
  for (int i = 0; i < portal::PortalServer::kMostStreams + 1; ++i) {
    readers.emplace_back([&] {
      client().Get(
          "/events",
          [&](const httplib::Response& response) {
            ++(response.status == 200 ? open : refused);
            return true;
          },
          [](const char*, std::size_t) { return true; });
    });
  }
  EXPECT_TRUE(runMainLoopUntil([&] {
    return open == portal::PortalServer::kMostStreams && refused == 1;
  })) << open
      << " open, " << refused << " refused";
  portal.process().signal(SIGTERM);
}

std::size_t residentKilobytes(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  std::string word;
  while (status >> word && word != "VmRSS:") {
  }
  std::size_t size = 0;
  status >> size;
  return size;
}

TEST_F(PracticePortal, MemoryStaysBoundedHoweverManyReportsCome) {
#if defined(VENDRIL_ASAN) || defined(VENDRIL_TSAN)
  GTEST_SKIP() << "the sanitizer keeps freed memory and would be measured instead";
#endif
  const std::string body(portal::PortalServer::kLargestBody, '\x01');
  auto sender = client();
  sender.set_keep_alive(true);
  sender.set_tcp_nodelay(true);
  const auto send = [&](int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_TRUE(sender.Post("/report", body, "text/plain"));
    }
  };
  send(30);
  const std::size_t before = residentKilobytes(portal.process().pid());
  send(90);
  EXPECT_LT(residentKilobytes(portal.process().pid()), before + before / 2);
}

TEST_F(PracticePortal, EachTerminationSignalEndsItAtOnceWhateverIsOpen) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    PortalProcess other(kProgram, {"--slow", "59"});
    httplib::Client listener("127.0.0.1", other.port());
    httplib::Client sender("127.0.0.1", other.port());
    std::jthread stream(
        [&] { listener.Get("/events", [](const char*, std::size_t) { return true; }); });
    std::jthread slow([&] { sender.Post("/report?answer=slow", "session_id=slow", kForm); });
    ASSERT_TRUE(other.process().waitForOut("session_id = slow"));
    other.process().signal(signal);
    EXPECT_EQ(other.process().waitForExit(), 0) << signal << other.process().err();
  }
}

TEST_F(PracticePortal, OptionsThatMakeNoSenseAreRefused) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--answer", "100"},
                                                    {"--answer", "maybe"},
                                                    {"--port", "70000"},
                                                    {"--slow", "0"},
                                                    {"--slow", "60"},
                                                    {"--unknown"}}) {
    std::vector<std::string> command{kProgram};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess process(command);
    EXPECT_GT(process.waitForExit().value_or(0), 0) << ::testing::PrintToString(arguments);
    EXPECT_NE(process.err(), "") << ::testing::PrintToString(arguments);
  }
}

TEST_F(PracticePortal, PortThatIsTakenIsAnErrorInOneLine) {
  ChildProcess second({kProgram, "--port", std::to_string(portal.port())});
  EXPECT_EQ(second.waitForExit(), 1);
  EXPECT_EQ(second.err(), "vendril-portal: cannot listen on 127.0.0.1 port " +
                              std::to_string(portal.port()) + "\n");
}

}  // namespace
}  // namespace vendril
