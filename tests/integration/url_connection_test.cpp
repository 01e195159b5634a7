#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "support/RawServer.h"
#include "support/TestCertificate.h"
#include "support/TestPortal.h"
#include "support/ThreadActivity.h"
#include "support/ThreadsRefused.h"
#include "support/UrlConnectionFixture.h"

namespace vendril {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
constexpr const char* kEventThread = "vendril-http";

class UrlConnectionTest : public UrlConnectionFixture {
 protected:
  /// An error and nothing else, whose description is one readable line.
  static void expectError(const Outcome& outcome) {
    EXPECT_FALSE(outcome.response) << outcome.statusCode().value_or(0);
    EXPECT_FALSE(outcome.data);
    ASSERT_TRUE(outcome.error);
    EXPECT_THAT(outcome.errorText(), Not(IsEmpty()));
    for (const char character : outcome.errorText()) {
      EXPECT_GE(character, ' ') << outcome.errorText();
    }
  }
};

TEST_F(UrlConnectionTest, SendsMethodHeadersAndBodyAsTheyAre) {
  TestPortal portal;
  portal.answerWith({.body = "thanks"});
  const std::string body = "data=%7B%7D&session_id=1&command=set_data";

  const Outcome outcome = fetch(post(portal.url("/post?x=1"), body));

  EXPECT_EQ(outcome.errorText(), "");
  EXPECT_EQ(outcome.statusCode(), 200);
  EXPECT_EQ(outcome.data, "thanks");
  const auto requests = portal.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].path, "/post");
  EXPECT_EQ(requests[0].header("Content-Type"), "application/x-www-form-urlencoded");
  EXPECT_EQ(requests[0].body, body);
}

TEST_F(UrlConnectionTest, SendsLargeBodiesWithNulBytesWholeAndWithoutExpect) {
  TestPortal portal;
  std::string body(3 * kMebibyte, 'x');
  body[1] = '\0';
  body[kMebibyte] = '\0';

  EXPECT_EQ(fetch(post(portal.url(), body)).statusCode(), 200);

  const auto requests = portal.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].header("Expect"), std::nullopt);
  EXPECT_TRUE(requests[0].body == body) << requests[0].body.size() << " bytes arrived";
}

TEST_F(UrlConnectionTest, AsksForNoCompressionAndSendsNoCookiesOrCredentials) {
  TestPortal portal;
  portal.answerWith({.headers = {{"Set-Cookie", "a=b"}}});
  fetch(portal.url());
  fetch(portal.url());
  for (const auto& request : portal.requests()) {
    for (const char* header : {"Accept-Encoding", "Cookie", "Authorization"}) {
      EXPECT_EQ(request.header(header), std::nullopt) << header;
    }
  }
}

TEST_F(UrlConnectionTest, HandsOverTheBodyOfEveryStatus) {
  TestPortal portal;
  portal.answerNextWith({.status = 500, .body = "out of order"});
  const Outcome broken = fetch(portal.url());
  EXPECT_EQ(broken.statusCode(), 500);
  EXPECT_EQ(broken.data, "out of order");
  EXPECT_FALSE(broken.error);
}

TEST_F(UrlConnectionTest, HandsOverAnEmptyBodyWhenThereIsNone) {
  TestPortal portal;
  portal.answerNextWith({.status = 204});
  const Outcome outcome = fetch(portal.url());
  EXPECT_EQ(outcome.statusCode(), 204);
  EXPECT_EQ(outcome.data, "");
}

TEST_F(UrlConnectionTest, KnowsSchemesInAnyCase) {
  TestPortal portal;
  EXPECT_EQ(fetch("HTTP" + portal.url().substr(4)).statusCode(), 200);
}

TEST_F(UrlConnectionTest, DoesNotFollowRedirects) {
  TestPortal target;
  TestPortal portal;
  portal.answerWith({.status = 302, .headers = {{"Location", target.url()}}});
  EXPECT_EQ(fetch(portal.url()).statusCode(), 302);
  EXPECT_THAT(target.requests(), IsEmpty());
}

TEST_F(UrlConnectionTest, SendsSuccessiveRequestsOverOneConnection) {
  TestPortal portal;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  }
  EXPECT_EQ(portal.requests().size(), 3U);
  EXPECT_EQ(portal.connections(), 1U);
}

TEST_F(UrlConnectionTest, ConnectsAnewWhenThePortalHasClosedTheConnection) {
  RawServer server(RawServer::answerAndClose);
  for (std::size_t i = 1; i <= 3; ++i) {
    const Outcome outcome = fetch(server.url());
    EXPECT_EQ(outcome.statusCode(), 200) << outcome.errorText();
    EXPECT_EQ(server.accepts(), i);
  }
}

TEST_F(UrlConnectionTest, SendsNoRequestASecondTimeWhenAKeptConnectionEndsWithoutAnAnswer) {
  std::atomic<int> requests = 0;
  const RawServer server([&requests](RawServer::Connection& connection) {
    if (!connection.readRequest().empty()) {
      ++requests;
      connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    }
    if (!connection.readRequest().empty()) {
      ++requests;
    }
  });
  EXPECT_EQ(fetch(server.url()).statusCode(), 200);
  EXPECT_EQ(fetch(server.url()).errorText(), "Empty reply from server");
  EXPECT_EQ(requests, 2);
}

TEST_F(UrlConnectionTest, RunsHandlersOnTheQueue) {
  TestPortal portal;
  queue_ = std::make_shared<ThreadOperationQueue>(1);
  std::promise<std::thread::id> worker;
  queue_->addOperation([&] { worker.set_value(std::this_thread::get_id()); });
  EXPECT_EQ(fetch(portal.url()).thread, worker.get_future().get());
}

TEST_F(UrlConnectionTest, KeepsTheQueueUntilTheHandlerHasRun) {
  TestPortal portal;
  portal.answerWith({.delay = 100ms});
  send(post(portal.url()));
  queue_.reset();
  ASSERT_TRUE(waitForOutcomes(1));
  EXPECT_EQ(outcomes()[0].statusCode(), 200);
}

TEST_F(UrlConnectionTest, FailsWhenTheConnectionIsRefused) {
  const ClosedPort port;
  expectError(fetch(port.url()));
}

TEST_F(UrlConnectionTest, FailsWhenTheConnectionIsReset) {
  const RawServer server(RawServer::resetAfterAccept);
  expectError(fetch(server.url()));
}

TEST_F(UrlConnectionTest, FailsWhenTheAnswerIsNotHttp) {
  const RawServer server(RawServer::answerGarbage);
  const Outcome outcome = fetch(server.url());
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("HTTP/0.9"));
}

TEST_F(UrlConnectionTest, FailsWhenTheStatusIsMalformed) {
  for (const char* line : {"HTTP/rubbish", "http/1.1 200 OK", "Http/1.1"}) {
    const RawServer server([line](RawServer::Connection& connection) {
      connection.readRequest();
      connection.write(std::string(line) + "\r\nContent-Length: 0\r\n\r\n");
    });
    const Outcome outcome = fetch(server.url());
    expectError(outcome);
    EXPECT_THAT(outcome.errorText(), HasSubstr("malformed status")) << line;
  }
}

TEST_F(UrlConnectionTest, FailsWhenNoAnswerComesInTime) {
  const RawServer server(RawServer::neverAnswer);
  UrlRequest request = post(server.url());
  request.timeoutInterval = 0.3s;
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = fetch(request);
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("timed out"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
}

TEST_F(UrlConnectionTest, TakesNoLongerThanTheCapOfATest) {
  connectWith({.timeoutCap = 200ms});
  const RawServer server(RawServer::neverAnswer);
  const Outcome outcome = fetch(server.url());
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("timed out"));
}

TEST_F(UrlConnectionTest, TakesABodyOfExactlyOneMebibyte) {
  TestPortal portal;
  portal.answerWith({.body = std::string(kMebibyte, 'x')});
  const Outcome outcome = fetch(portal.url());
  EXPECT_EQ(outcome.statusCode(), 200) << outcome.errorText();
  EXPECT_EQ(outcome.data.value_or("").size(), kMebibyte);
}

TEST_F(UrlConnectionTest, EndsABodyOfOneByteMoreWithAnErrorThatSaysSo) {
  TestPortal portal;
  portal.answerWith({.body = std::string(kMebibyte + 1, 'x')});
  const Outcome outcome = fetch(portal.url());
  expectError(outcome);
  EXPECT_EQ(outcome.errorText(), "The response body is larger than 1048576 bytes");
}

TEST_F(UrlConnectionTest, EndsABodyOfUnknownLengthThatDoesNotEnd) {
  for (const auto& script : {RawServer::answerWithoutEnd, RawServer::answerChunksWithoutEnd}) {
    const RawServer server(script);
    const Outcome outcome = fetch(server.url());
    expectError(outcome);
    EXPECT_THAT(outcome.errorText(), HasSubstr("larger than 1048576 bytes"));
  }
}

TEST_F(UrlConnectionTest, EndsHeadersThatDoNotEnd) {
  const RawServer server(RawServer::answerHeadersWithoutEnd);
  const Outcome outcome = fetch(server.url());
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("headers are too large"));
}

TEST_F(UrlConnectionTest, RefusesEverySchemeButHttpAndFileByName) {
  for (const std::string scheme : {"gopher", "dict", "ftp", "LDAP", "vendril"}) {
    const Outcome outcome = fetch(scheme + "://127.0.0.1/");
    expectError(outcome);
    EXPECT_EQ(outcome.errorText(), "Unsupported URL scheme: " + scheme);
  }
}

TEST_F(UrlConnectionTest, RefusesARequestWithoutAUrl) {
  UrlRequest request = post("http://127.0.0.1/");
  request.url = std::nullopt;
  const Outcome outcome = fetch(request);
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("Unsupported URL"));
}

TEST_F(UrlConnectionTest, RefusesUrlsWithoutAHost) {
  for (const std::string url : {"http:", "http:///path", "https:portal", "http://:80/", "portal"}) {
    const Outcome outcome = fetch(url);
    expectError(outcome);
    EXPECT_THAT(outcome.errorText(), HasSubstr("Unsupported URL")) << url;
  }
}

TEST_F(UrlConnectionTest, MakesItsThreadOnlyForARequestToAServer) {
  expectError(fetch("ftp://127.0.0.1/"));
  expectError(fetch("file:///nonexistent"));
  EXPECT_EQ(threadNamed(kEventThread), std::nullopt);

  fetch(ClosedPort().url());
  EXPECT_NE(threadNamed(kEventThread), std::nullopt);
}

TEST_F(UrlConnectionTest, ReportsThatItCannotMakeItsThreadAndTriesAgainLater) {
  TestPortal portal;
  fetch("file:///nonexistent");  // So that the queue has its thread.
  {
    const ThreadsRefused refused;
    const Outcome outcome = fetch(portal.url());
    expectError(outcome);
    EXPECT_THAT(outcome.errorText(), HasSubstr("could not be set up"));
  }
  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
}

class FileUrlTest : public UrlConnectionTest {
 protected:
  FileUrlTest() {
    std::string path = (std::filesystem::temp_directory_path() / "file-url-XXXXXX").string();
    directory_ = mkdtemp(path.data());
  }
  ~FileUrlTest() override { std::filesystem::remove_all(directory_); }

  std::string path(const std::string& name) const { return directory_ + "/" + name; }

  std::string urlOfFile(const std::string& contents) const {
    std::ofstream(path("a file")) << contents;
    return Url::fileUrlWithPath(path("a file")).absoluteString();
  }

  std::string directory_;
};

TEST_F(FileUrlTest, IsAnsweredWithItsContentsAndNoStatus) {
  const Outcome outcome = fetch(urlOfFile("contents"));
  EXPECT_EQ(outcome.errorText(), "");
  ASSERT_TRUE(outcome.response);
  EXPECT_EQ(outcome.statusCode(), std::nullopt);
  EXPECT_EQ(outcome.data, "contents");
  EXPECT_NE(outcome.thread, std::this_thread::get_id());
}

TEST_F(FileUrlTest, IsKnownByItsSchemeInAnyCase) {
  EXPECT_EQ(fetch("FILE" + urlOfFile("contents").substr(4)).data, "contents");
}

TEST_F(FileUrlTest, IsAnsweredBeforeTheQueueEndsThoughTheNetworkHasEnded) {
  std::promise<void> mayGoOn;
  queue_ = std::make_shared<ThreadOperationQueue>(1);
  queue_->addOperation([gate = mayGoOn.get_future().share()] { gate.wait(); });
  send(post(urlOfFile("contents")));
  connection_.reset();
  EXPECT_THAT(outcomes(), IsEmpty()) << "the request has to be pending when the network ends";
  mayGoOn.set_value();
  queue_.reset();
  ASSERT_EQ(outcomes().size(), 1U);
  EXPECT_EQ(outcomes()[0].data, "contents");
}

TEST_F(FileUrlTest, IsLimitedInSize) {
  EXPECT_EQ(fetch(urlOfFile(std::string(kMebibyte, 'x'))).data.value_or("").size(), kMebibyte);
  expectError(fetch(urlOfFile(std::string(kMebibyte + 1, 'x'))));
}

TEST_F(FileUrlTest, IsAnErrorWhenThereIsNoSuchFile) {
  const Outcome outcome = fetch("file://" + path("missing"));
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), AllOf(HasSubstr("missing"), HasSubstr("No such file")));
}

TEST_F(FileUrlTest, IsAnErrorWhenItNamesADirectoryADeviceOrAForeignHost) {
  expectError(fetch("file://" + directory_));
  expectError(fetch("file:///dev/zero"));
  expectError(fetch("file://elsewhere" + urlOfFile("x").substr(7)));
  expectError(fetch("file://" + path("nul%00")));
}

TEST_F(FileUrlTest, IsAnErrorForAPipeWithoutWaitingForItsOtherEnd) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  expectError(fetch("file://" + path("pipe")));
}

TEST_F(UrlConnectionTest, RefusesACertificateThatNobodyVouchesFor) {
  const TestCertificate certificate;
  TestPortal portal(certificate);
  const Outcome outcome = fetch(portal.url());
  expectError(outcome);
  EXPECT_THAT(outcome.errorText(), HasSubstr("certificate"));
  EXPECT_THAT(portal.requests(), IsEmpty());
}

TEST_F(UrlConnectionTest, AcceptsACertificateOfATrustedAuthority) {
  const TestCertificate certificate;
  TestPortal portal(certificate);
  connectWith({.certificateAuthorityFile = certificate.certificateFile()});
  const Outcome outcome = fetch(portal.url());
  EXPECT_EQ(outcome.statusCode(), 200) << outcome.errorText();
}

TEST_F(UrlConnectionTest, RefusesATrustedCertificateOfAnotherHost) {
  const TestCertificate certificate;
  TestPortal portal(certificate);
  connectWith({.certificateAuthorityFile = certificate.certificateFile()});
  expectError(fetch("https://localhost:" + std::to_string(portal.port()) + "/"));
  EXPECT_THAT(portal.requests(), IsEmpty());
}

TEST_F(UrlConnectionTest, WritesNoKeysWhereSslKeyLogFilePoints) {
  const TestCertificate certificate;
  const std::string keyLog = certificate.directory + "/keys.log";
  const EnvironmentVariable variable("SSLKEYLOGFILE", keyLog);
  TestPortal portal(certificate);

  CurlUrlConnection::prepareProcess();
  connectWith({.certificateAuthorityFile = certificate.certificateFile()});

  EXPECT_EQ(fetch(portal.url()).statusCode(), 200);
  EXPECT_FALSE(std::filesystem::exists(keyLog));
}

}  // namespace
}  // namespace vendril
