// The answer of a portal, from its bytes on the socket to the outcome in the log.

#include <curl/curl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "fuzz/Agent.h"
#include "fuzz/FuzzTarget.h"
#include "platform/AsciiCase.h"
#include "platform/Utf8.h"
#include "platform/freedesktop/CurlTransfer.h"
#include "platform/freedesktop/FileDescriptor.h"

namespace vendril::fuzz {
namespace {

/// Small, so that inputs reach them.
CurlLimits smallLimits() {
  CurlLimits limits;
  limits.maxBodySize = 256;
  limits.maxHeaderSize = 1024;
  return limits;
}

struct Result {
  std::optional<UrlResponse> response;
  std::optional<std::string> data;
  std::optional<UrlError> error;
};

/// A socket in the file system on which portals listen.
class Listener {
 public:
  Listener() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    require(bind(socket_.get(), generic, sizeof address) == 0 && listen(socket_.get(), 1) == 0,
            "There is a socket to listen on");
  }

  const std::string& path() const { return path_; }
  /// The next connection; false when there is none.
  FileDescriptor accept() const {
    return FileDescriptor(accept4(socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  }

 private:
  std::string path_ = scratchDirectory() / "portal";
  FileDescriptor socket_;
};

/// Sends each request with the agent's own transfer to a portal that gives its answer and closes.
class AnsweredConnection : public UrlConnection {
 public:
  std::string_view answer;
  std::vector<Result> results;

  void sendAsynchronousRequest(UrlRequest request, std::shared_ptr<OperationQueue> queue,
                               CompletionHandler handler) override {
    const auto kept = [this, handler = std::move(handler)](auto response, auto data, auto error) {
      results.push_back({response, data, error});
      handler(response, data, error);
    };
    CurlTransfer transfer(std::move(request), "http://portal:80",
                          RequestCompletion(std::move(queue), kept));
    transfer.setProxy("");
    const CurlEasyPtr easy(curl_easy_init());
    const CurlLimits limits = smallLimits();
    require(transfer.prepare(easy.get(), limits) == CURLE_OK, "A request can be prepared");
    transfer.finish(easy.get(), perform(easy.get()));
  }

 private:
  CURLcode perform(CURL* easy) const {
    static const Listener kListener;
    curl_easy_setopt(easy, CURLOPT_UNIX_SOCKET_PATH, kListener.path().c_str());
    const CurlMultiPtr multi(curl_multi_init());
    curl_multi_add_handle(multi.get(), easy);
    int running = 1;
    curl_multi_perform(multi.get(), &running);
    const FileDescriptor portal = kListener.accept();
    require(static_cast<bool>(portal), "A request connects");
    // What finds no room in the socket is cut off.
    static_cast<void>(send(portal.get(), answer.data(), answer.size(), MSG_NOSIGNAL));
    shutdown(portal.get(), SHUT_WR);
    while (running > 0) {
      curl_multi_poll(multi.get(), nullptr, 0, 1000, nullptr);
      curl_multi_perform(multi.get(), &running);
    }
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi.get(), &left);
    require(message != nullptr && message->msg == CURLMSG_DONE, "A transfer ends");
    const CURLcode result = message->data.result;
    curl_multi_remove_handle(multi.get(), easy);
    return result;
  }
};

class OnlineHost : public FakeHost {
 public:
  AnsweredConnection connection;

  UrlConnection& urlConnection() override { return connection; }
};

/// The message that an outcome is logged with, without the class name in front.
std::string expectedOutcome(const Result& result, const std::string& uuid) {
  if (result.error) {
    return "Request " + uuid + " failed with error: " + result.error->localizedDescription;
  }
  const int status = result.response->statusCode.value_or(0);
  return "Request " + uuid + (status == 200 ? " has been successfully sent with" : " failed with") +
         " HTTP status code: " + std::to_string(status);
}

void checkResult(const Result& result, std::string_view answer) {
  require(result.error.has_value() != result.response.has_value(),
          "A request ends with a response or with an error");
  require(result.response.has_value() == result.data.has_value(),
          "A response has a body, and an error has none");
  if (result.error) {
    require(isValidUtf8(result.error->localizedDescription) ||
                answer.find(result.error->localizedDescription) == answer.npos,
            "An error is a text of our own");
    return;
  }
  require(result.response->statusCode.has_value(), "The response of a portal has a status");
  require(answer.find(std::to_string(*result.response->statusCode)) != answer.npos,
          "The status is one that the portal has sent");
  require(result.data->size() <= smallLimits().maxBodySize, "A body is bounded");
  require(result.data->size() <= answer.size(), "A body never expands");
  require(asciiLowercase(answer).find("chunked") != std::string::npos ||
              answer.find(*result.data) != answer.npos,
          "A body is a part of the answer");
}

}  // namespace

void check(std::string_view input) {
  static const CurlGlobal kCurl;
  Agent<OnlineHost> agent;
  agent.host.connection.answer = input;
  agent.host.fakeSystemLog.take();
  agent.delegate->sendRequest("http://127.0.0.1/report?session_id=7", "7", "{}");
  agent.host.fakeSystemLog.take();
  agent.host.operationQueues.front()->runAll();

  require(agent.host.connection.results.size() == 1, "A request ends once");
  const Result& result = agent.host.connection.results.front();
  checkResult(result, input);
  const std::vector<std::string> messages = agent.host.fakeSystemLog.take();
  std::for_each(messages.begin(), messages.end(), requireOneRecord);
  const std::string outcome =
      "[ZQN5VendrilAppDelegate] " + expectedOutcome(result, *agent.host.fakeUuidGenerator.next);
  const bool showsBody = result.response && result.response->statusCode != 200;
  require(messages.size() == (showsBody ? 2U : 1U) && messages.front() == outcome,
          "A request has one outcome in the log");
  require(
      !showsBody || messages.back().ends_with(isValidUtf8(*result.data) ? *result.data : "(null)"),
      "The body of a failure is logged when it is text");
}

}  // namespace vendril::fuzz
