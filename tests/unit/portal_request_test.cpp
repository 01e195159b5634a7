#include "support/DelegateFixture.h"

namespace vendril {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr const char* kId = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";

class PortalRequest : public DelegateFixture {
 protected:
  PortalRequest() { launch(); }

  void send(const std::string& sessionId = "7") {
    delegate->sendRequest("http://p.example/x?y=1", sessionId, "{}");
  }

  /// Answers the only request and returns what the delegate then logs.
  std::vector<std::string> messagesAfter(std::optional<UrlResponse> response,
                                         std::optional<std::string> data,
                                         std::optional<UrlError> error = std::nullopt) {
    send();
    host.fakeSystemLog.take();
    host.fakeUrlConnection.complete(0, response, std::move(data), std::move(error));
    EXPECT_THAT(host.fakeSystemLog.messages(), IsEmpty()) << "the handler runs on the queue";
    EXPECT_EQ(runCompletions(), 1U);
    return host.fakeSystemLog.take();
  }
};

TEST_F(PortalRequest, AllArgumentsEmptyLogsOnlyThePortalUrlMessage) {
  delegate->sendRequest("", "", "");
  EXPECT_THAT(
      host.fakeSystemLog.take(),
      ElementsAre("[ZQN5VendrilAppDelegate] Request failed with error: Portal URL is empty"));
  delegate->sendRequest(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_THAT(
      host.fakeSystemLog.take(),
      ElementsAre("[ZQN5VendrilAppDelegate] Request failed with error: Portal URL is empty"));
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(PortalRequest, EmptySessionIdLogsOnlyThatAndSendsNothing) {
  for (const std::optional<std::string>& empty : {std::optional<std::string>(""), {}}) {
    delegate->sendRequest("http://p", empty, "");
    EXPECT_THAT(host.fakeSystemLog.take(),
                ElementsAre("[ZQN5VendrilAppDelegate] Request failed with error: Session ID is "
                            "empty"));
  }
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(PortalRequest, EmptyDataLogsOnlyThatAndSendsNothing) {
  for (const std::optional<std::string>& empty : {std::optional<std::string>(""), {}}) {
    delegate->sendRequest("http://p", "7", empty);
    EXPECT_THAT(host.fakeSystemLog.take(),
                ElementsAre("[ZQN5VendrilAppDelegate] Request failed with error: Data is empty"));
  }
  EXPECT_THAT(host.fakeUrlConnection.requests, IsEmpty());
}

TEST_F(PortalRequest, RequestIsAFormPostWithASixtySecondLimit) {
  send();
  const UrlRequest& request = onlyRequest();
  EXPECT_EQ(request.url->absoluteString(), "http://p.example/x?y=1");
  EXPECT_EQ(static_cast<int>(request.cachePolicy), 0);
  EXPECT_EQ(request.timeoutInterval.count(), 60.0);
  EXPECT_EQ(request.httpMethod, "POST");
  EXPECT_THAT(request.headerFields,
              ElementsAre(Pair("Content-Type", "application/x-www-form-urlencoded")));
  EXPECT_EQ(request.httpBody, "data=%7B%7D&session_id=7&command=set_data");
  EXPECT_EQ(host.fakeUrlConnection.requests[0].queue, delegate->operationQueue());
}

TEST_F(PortalRequest, PayloadAndRequestAreLoggedBeforeItIsSent) {
  std::vector<std::string> loggedBefore;
  host.fakeUrlConnection.whenSent = [&] { loggedBefore = host.fakeSystemLog.take(); };
  send("a b");
  EXPECT_THAT(loggedBefore,
              ElementsAre("[ZQN5VendrilAppDelegate] Payload:\n"
                          "{\n"
                          "    command = set_data;\n"
                          "    data = \"{}\";\n"
                          "    session_id = \"a b\";\n"
                          "}\n",
                          "[ZQN5VendrilAppDelegate] Payload string: "
                          "data=%7B%7D&session_id=a%20b&command=set_data",
                          "[ZQN5VendrilAppDelegate] Sending POST request "
                          "3F2504E0-4F89-41D3-9A0C-0305E82C3301 to: http://p.example/x?y=1"));
  EXPECT_THAT(host.fakeSystemLog.take(), IsEmpty());
}

TEST_F(PortalRequest, SpecialCharactersOfASessionIdArriveIntact) {
  send("a b+c=d&e/f:g;h?#%\xC3\xA4");
  EXPECT_EQ(onlyRequest().httpBody,
            "data=%7B%7D&session_id=a%20b%2Bc%3Dd%26e/f:g%3Bh%3F%23%25%C3%A4&command=set_data");
}

TEST_F(PortalRequest, AddressThatIsNoUrlIsHandedOnWithoutOne) {
  delegate->sendRequest("not a url", "7", "{}");
  EXPECT_EQ(onlyRequest().url, std::nullopt);
}

TEST_F(PortalRequest, AbsentPayloadYieldsNothingAndLogsNothing) {
  EXPECT_EQ(delegate->dataFromPayload(std::nullopt), std::nullopt);
  EXPECT_THAT(host.fakeSystemLog.take(), IsEmpty());
}

TEST_F(PortalRequest, BodyNeverStartsOrEndsWithAnAmpersand) {
  using Payload = ZQN5VendrilAppDelegate::Payload;
  EXPECT_EQ(delegate->dataFromPayload(Payload{}), "");
  EXPECT_EQ(delegate->dataFromPayload(Payload{{"a", ""}}), "a=");
  EXPECT_EQ(delegate->dataFromPayload(Payload{{"a&", "1"}, {"b", "="}}), "a%26=1&b=%3D");
}

TEST_F(PortalRequest, IdentifierIsEmptyWhenNoneCouldBeMade) {
  EXPECT_EQ(delegate->generateUUIDString(), kId);
  host.fakeUuidGenerator.next.reset();
  EXPECT_EQ(delegate->generateUUIDString(), "");
  send();
  EXPECT_THAT(host.fakeSystemLog.take().back(),
              "[ZQN5VendrilAppDelegate] Sending POST request  to: http://p.example/x?y=1");
}

TEST_F(PortalRequest, StatusTwoHundredIsSuccessAndItsBodyIsNotLogged) {
  EXPECT_THAT(messagesAfter(UrlResponse{200}, "secret"),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "has been successfully sent with HTTP status code: 200"));
}

TEST_F(PortalRequest, StatusTwoHundredAndFourIsAFailureWithItsEmptyBodyShown) {
  EXPECT_THAT(messagesAfter(UrlResponse{204}, ""),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "failed with HTTP status code: 204",
                          "[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "response data: "));
}

TEST_F(PortalRequest, StatusTwoHundredAndOneWithoutDataLogsTheStatusLineAlone) {
  EXPECT_THAT(messagesAfter(UrlResponse{201}, std::nullopt),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "failed with HTTP status code: 201"));
}

TEST_F(PortalRequest, ServerErrorLogsTheStatusAndThenTheBody) {
  EXPECT_THAT(messagesAfter(UrlResponse{500}, "out of order"),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "failed with HTTP status code: 500",
                          "[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "response data: out of order"));
}

TEST_F(PortalRequest, BodyThatIsNotUtf8ShowsAsAnAbsentText) {
  EXPECT_THAT(messagesAfter(UrlResponse{500}, "\xFF").back(),
              "[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 response "
              "data: (null)");
}

TEST_F(PortalRequest, TransportErrorIsLoggedEvenWhenAResponseCameToo) {
  EXPECT_THAT(messagesAfter(UrlResponse{200}, "x", UrlError{"Connection reset"}),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "failed with error: Connection reset"));
}

TEST_F(PortalRequest, ResponseThatIsNotHttpCountsAsSent) {
  EXPECT_THAT(messagesAfter(UrlResponse{}, "x"),
              ElementsAre("[ZQN5VendrilAppDelegate] Request 3F2504E0-4F89-41D3-9A0C-0305E82C3301 "
                          "has been successfully sent"));
}

TEST_F(PortalRequest, NothingIsLoggedWhenTheDelegateIsGone) {
  send();
  const std::weak_ptr<ZQN5VendrilAppDelegate> watched = delegate;
  delegate.reset();
  EXPECT_TRUE(watched.expired()) << "a pending request does not keep the delegate";
  host.fakeSystemLog.take();
  host.fakeUrlConnection.complete(0, UrlResponse{200}, "", std::nullopt);
  EXPECT_EQ(runCompletions(), 1U);
  EXPECT_THAT(host.fakeSystemLog.take(), IsEmpty());
}

TEST_F(PortalRequest, EachRequestIsReportedUnderItsOwnIdentifier) {
  send();
  host.fakeUuidGenerator.next = "SECOND";
  send();
  host.fakeSystemLog.take();
  host.fakeUrlConnection.complete(1, UrlResponse{200}, "", std::nullopt);
  runCompletions();
  EXPECT_THAT(host.fakeSystemLog.take(),
              ElementsAre("[ZQN5VendrilAppDelegate] Request SECOND has been successfully sent with "
                          "HTTP status code: 200"));
}

}  // namespace
}  // namespace vendril
