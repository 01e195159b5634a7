#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/UrlConnection.h"
#include "platform/freedesktop/CurlUrlConnection.h"
#include "platform/freedesktop/ThreadOperationQueue.h"

namespace vendril {

/// What a completion handler was given, and where it ran.
struct Outcome {
  /// The number of the request, in the order of sending, from 0.
  std::size_t request = 0;
  std::optional<UrlResponse> response;
  std::optional<std::string> data;
  std::optional<UrlError> error;
  std::thread::id thread;

  std::optional<int> statusCode() const { return response ? response->statusCode : std::nullopt; }
  std::string errorText() const { return error ? error->localizedDescription : ""; }
};

/// Sets or, with nothing, unsets an environment variable while it lives.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value);
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable();

 private:
  void set(const std::optional<std::string>& value) const;

  std::string name_;
  std::optional<std::string> before_;
};

/// Sends requests over a connection of its own, in an environment without proxies, and collects
/// their outcomes.
class UrlConnectionFixture : public testing::Test {
 protected:
  UrlConnectionFixture();

  /// Answers that there is no proxy.
  static ProxyAnswer noProxy(const std::string& url);

  /// Replaces the connection. Before any request is sent.
  void connectWith(const CurlLimits& limits, ProxyResolver resolver = noProxy);

  static UrlRequest post(const std::string& url, const std::string& body = "a=b");
  void send(UrlRequest request);
  /// Sends and waits for the outcome; only while no other request is under way.
  Outcome fetch(UrlRequest request);
  Outcome fetch(const std::string& url) { return fetch(post(url)); }

  /// The outcomes so far, in the order of completion.
  std::vector<Outcome> outcomes() const;
  /// Waits for this many outcomes in all; false when they have not come for 60 s.
  bool waitForOutcomes(std::size_t count) const;

  std::unique_ptr<CurlUrlConnection> connection_;
  std::shared_ptr<ThreadOperationQueue> queue_;

 private:
  struct Collected {
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::vector<Outcome> outcomes;
  };

  /// Outlives the fixture as long as a handler needs it.
  std::shared_ptr<Collected> collected_ = std::make_shared<Collected>();
  std::size_t sent_ = 0;
  std::list<EnvironmentVariable> environment_;
};

}  // namespace vendril
