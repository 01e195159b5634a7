#include "platform/Host.h"
#include "platform/ProcessInfo.h"
#include "protocol/ZQN5ProtocolHandler.h"

namespace vendril {
namespace {

std::optional<Url> decodedUrl(const UrlEvent& event) {
  return event.directObject ? Url::parse(*event.directObject) : std::nullopt;
}

Date currentDate() {
  return Host::current().processInfo().currentDate();
}

}  // namespace

ZQN5ProtocolHandler& ZQN5ProtocolHandler::sharedInstance() {
  // Not destroyed, because the desktop keeps the event handlers for as long as the process lives.
  static ZQN5ProtocolHandler& instance = *new ZQN5ProtocolHandler();
  return instance;
}

ZQN5ProtocolHandler::ZQN5ProtocolHandler()
    : supportedURLSchemes_(supportedURLSchemes(Host::current().bundle())) {
  const auto handler = [this](const UrlEvent& event, UrlEvent& reply) { getUrl(event, reply); };
  UrlEvents& events = Host::current().urlEvents();
  events.setEventHandler(handler, UrlEvents::kInternetEventClass, UrlEvents::kGetUrlEventId);
  events.setEventHandler(handler, UrlEvents::kWebEventClass, UrlEvents::kOpenUrlEventId);
}

bool ZQN5ProtocolHandler::start() {
  if (!paused_) {
    logTo(loggerBlock_, "WARNING: Trying to start ProtocolHandler when it's not paused!");
    return false;
  }
  paused_ = false;
  logTo(loggerBlock_, "Started");
  if (!bufferURL_) {
    logTo(loggerBlock_, "There is no URL buffered");
    return false;
  }
  replayBuffer();
  return true;
}

void ZQN5ProtocolHandler::pause() {
  if (paused_) {
    return;
  }
  paused_ = true;
  logTo(loggerBlock_, "Paused");
}

void ZQN5ProtocolHandler::getUrl(const UrlEvent& event, UrlEvent& /*reply*/) {
  const std::optional<Url> url = decodedUrl(event);
  if (!url) {
    logTo(loggerBlock_, "Failed to decode URL from event descriptor");
    return;
  }
  logTo(loggerBlock_, "New URL received: '%@'", *url);
  if (paused_) {
    saveToBuffer(*url);
  } else {
    logTo(loggerBlock_, "Executing event block with URL: '%@'", *url);
    executeEventBlock(*url, currentDate());
  }
}

void ZQN5ProtocolHandler::resetBufferURL() {
  bufferURL_.reset();
  bufferDate_.reset();
}

void ZQN5ProtocolHandler::saveToBuffer(const Url& url) {
  logTo(loggerBlock_, "Saving URL to buffer: '%@'", url);
  bufferURL_ = url;
  bufferDate_ = currentDate();
  // A copy runs, so that a block may replace itself.
  if (const BufferBlock block = bufferBlock_) {
    block(url);
  }
}

void ZQN5ProtocolHandler::replayBuffer() {
  // Copies, so that the event block may change the buffer.
  const Url url = *bufferURL_;
  const std::optional<Date> date = bufferDate_;
  logTo(loggerBlock_, "Loading URL from buffer: '%@'", url);
  logTo(loggerBlock_, "Executing event block with URL: '%@' Original date: %@", url, date);
  executeEventBlock(url, date);
  logTo(loggerBlock_, "Clearing buffer");
  resetBufferURL();
}

void ZQN5ProtocolHandler::executeEventBlock(const Url& url, std::optional<Date> date) const {
  // A copy runs, so that a block may replace itself.
  if (const EventBlock block = eventBlock_) {
    block(url, date);
  }
}

}  // namespace vendril
