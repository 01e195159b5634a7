#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/Bundle.h"
#include "platform/Date.h"
#include "platform/LoggerBlock.h"
#include "platform/Url.h"
#include "platform/UrlEvents.h"

namespace vendril {

/// Takes in the links that the desktop hands to the application, and makes the application the
/// default handler of their schemes. While paused it holds back the latest link; while running it
/// hands each link to the event block at once. Main thread only, the first use included; the
/// blocks run there too, inside the operation that calls them.
class ZQN5ProtocolHandler {
 public:
  /// Takes a link that was held back. An empty block is an absent one.
  using BufferBlock = std::function<void(const Url& url)>;
  /// Takes a link and the date on which it arrived; no date when a link was put into the buffer
  /// without one. An empty block is an absent one.
  using EventBlock = std::function<void(const Url& url, std::optional<Date> date)>;

  using Schemes = std::set<std::string>;

  /// The one handler of the process. The first use creates it, paused and with its URL event
  /// handlers installed in the current host; it is never destroyed.
  static ZQN5ProtocolHandler& sharedInstance();

  ZQN5ProtocolHandler(const ZQN5ProtocolHandler&) = delete;
  ZQN5ProtocolHandler& operator=(const ZQN5ProtocolHandler&) = delete;

  /// Ends the paused state and hands on the link that was held back, with the date of its arrival.
  /// True only when there was one.
  bool start();
  void pause();

  /// Handles a GetURL or OpenURL event; `reply` is left as it is.
  void getUrl(const UrlEvent& event, UrlEvent& reply);

  /// Forgets the link that was held back.
  void resetBufferURL();

  bool isPaused() const { return paused_; }

  const BufferBlock& bufferBlock() const { return bufferBlock_; }
  void setBufferBlock(BufferBlock block) { bufferBlock_ = std::move(block); }
  const EventBlock& eventBlock() const { return eventBlock_; }
  void setEventBlock(EventBlock block) { eventBlock_ = std::move(block); }
  const LoggerBlock& loggerBlock() const { return loggerBlock_; }
  void setLoggerBlock(LoggerBlock block) { loggerBlock_ = std::move(block); }

  const std::optional<Url>& bufferURL() const { return bufferURL_; }
  void setBufferURL(std::optional<Url> url) { bufferURL_ = std::move(url); }
  const std::optional<Date>& bufferDate() const { return bufferDate_; }
  void setBufferDate(std::optional<Date> date) { bufferDate_ = date; }

  /// The schemes that the bundle declared when the handler was created.
  const Schemes& supportedURLSchemes() const { return supportedURLSchemes_; }

  /// The schemes that `bundle` declares now, each spelled as it is written there. What is not of
  /// the kind that belongs in its place declares nothing.
  static Schemes supportedURLSchemes(const Bundle& bundle);

  /// True for one of `supportedURLSchemes`; case matters. Logs any other scheme.
  bool isValidScheme(const std::string& scheme) const;

  /// The bundle's identifier in lower case; empty when the bundle has none.
  static std::string bundleIdentifier();

  /// Makes the application the default handler of the scheme. False when the scheme is not valid
  /// or the desktop refused.
  bool registerForURLScheme(const std::string& scheme) const;

  /// Makes another application the default handler of the scheme: the last one of the desktop's
  /// list of handlers that can be made it. True also when the application was not the default
  /// handler; false when the scheme is not valid or no other handler was accepted.
  bool unregisterFromURLScheme(const std::string& scheme) const;

  /// True when the application is the default handler of the scheme.
  bool isRegisteredForURLScheme(const std::string& scheme) const;

  /// The operation on one scheme for each of `schemes` in turn, up to the first that answers false.
  /// True when none did.
  bool registerForURLSchemes(const Schemes& schemes) const;
  bool unregisterFromURLSchemes(const Schemes& schemes) const;
  bool isRegisteredForURLSchemes(const Schemes& schemes) const;

  /// The operation on a set of schemes for `supportedURLSchemes`.
  bool registerForAllSupportedURLSchemes() const;
  bool unregisterFromAllSupportedURLSchemes() const;
  bool isRegisteredForAllSupportedURLSchemes() const;

 private:
  /// Rebuilds the shared instance between tests.
  friend class FreshProtocolHandler;

  ZQN5ProtocolHandler();
  ~ZQN5ProtocolHandler() = default;

  void saveToBuffer(const Url& url);
  void replayBuffer();
  void executeEventBlock(const Url& url, std::optional<Date> date) const;
  bool registerOneOfOthers(const std::string& scheme,
                           const std::vector<std::string>& handlers) const;
  bool registerOther(const std::string& scheme, const std::string& handler) const;

  bool paused_ = true;
  BufferBlock bufferBlock_;
  EventBlock eventBlock_;
  LoggerBlock loggerBlock_;
  Schemes supportedURLSchemes_;
  std::optional<Url> bufferURL_;
  std::optional<Date> bufferDate_;
};

}  // namespace vendril
