#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/UrlEvents.h"

namespace vendril {

/// Delivers an event at once, when a test says so.
class FakeUrlEvents : public UrlEvents {
 public:
  using Kind = std::pair<FourCharCode, FourCharCode>;

  /// The kinds of event for which a handler was set, in order.
  std::vector<Kind> registrations;

  void setEventHandler(Handler handler, FourCharCode eventClass, FourCharCode eventId) override {
    registrations.emplace_back(eventClass, eventId);
    handlers_[{eventClass, eventId}] = std::move(handler);
  }

  /// Delivers an event with `directObject`; true when there was a handler.
  bool deliver(std::optional<std::string> directObject,
               Kind kind = {kInternetEventClass, kGetUrlEventId}) {
    const auto entry = handlers_.find(kind);
    if (entry == handlers_.end()) {
      return false;
    }
    UrlEvent reply;
    entry->second(UrlEvent{std::move(directObject)}, reply);
    return true;
  }

 private:
  std::map<Kind, Handler> handlers_;
};

}  // namespace vendril
