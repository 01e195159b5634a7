#include "support/UrlConnectionFixture.h"

#include <chrono>
#include <cstdlib>
#include <utility>

namespace vendril {

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
  if (const char* const before = std::getenv(name_.c_str())) {
    before_ = before;
  }
  set(value);
}

EnvironmentVariable::~EnvironmentVariable() {
  set(before_);
}

void EnvironmentVariable::set(const std::optional<std::string>& value) const {
  if (value) {
    setenv(name_.c_str(), value->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

UrlConnectionFixture::UrlConnectionFixture() : queue_(std::make_shared<ThreadOperationQueue>()) {
  for (const char* variable : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY",
                               "no_proxy", "NO_PROXY"}) {
    environment_.emplace_back(variable, std::nullopt);
  }
  connectWith({});
}

ProxyAnswer UrlConnectionFixture::noProxy(const std::string& /*url*/) {
  return {{"direct://"}, true};
}

void UrlConnectionFixture::connectWith(const CurlLimits& limits, ProxyResolver resolver) {
  connection_ = std::make_unique<CurlUrlConnection>(limits, std::move(resolver));
}

UrlRequest UrlConnectionFixture::post(const std::string& url, const std::string& body) {
  UrlRequest request;
  request.url = Url::parse(url);
  request.httpMethod = "POST";
  request.headerFields = {{"Content-Type", "application/x-www-form-urlencoded"}};
  request.httpBody = body;
  return request;
}

void UrlConnectionFixture::send(UrlRequest request) {
  connection_->sendAsynchronousRequest(
      std::move(request), queue_,
      [collected = collected_, number = sent_++](auto response, auto data, auto error) {
        const std::lock_guard lock(collected->mutex);
        collected->outcomes.push_back(
            {number, response, std::move(data), std::move(error), std::this_thread::get_id()});
        collected->changed.notify_all();
      });
}

Outcome UrlConnectionFixture::fetch(UrlRequest request) {
  send(std::move(request));
  if (!waitForOutcomes(sent_)) {
    ADD_FAILURE() << "no outcome";
    return {};
  }
  return outcomes().back();
}

std::vector<Outcome> UrlConnectionFixture::outcomes() const {
  const std::lock_guard lock(collected_->mutex);
  return collected_->outcomes;
}

bool UrlConnectionFixture::waitForOutcomes(std::size_t count) const {
  std::unique_lock lock(collected_->mutex);
  return collected_->changed.wait_for(lock, std::chrono::seconds(60),
                                      [&] { return collected_->outcomes.size() >= count; });
}

}  // namespace vendril
