#pragma once

#include <utility>

#include "platform/UrlEvents.h"

namespace vendril {

/// Hands every operation on to another UrlEvents, which outlives this one. A test that breaks one
/// operation overrides that one.
class ForwardingUrlEvents : public UrlEvents {
 public:
  explicit ForwardingUrlEvents(UrlEvents& target) : target_(target) {}

  void setEventHandler(Handler handler, FourCharCode eventClass, FourCharCode eventId) override {
    target_.setEventHandler(std::move(handler), eventClass, eventId);
  }

 private:
  UrlEvents& target_;
};

}  // namespace vendril
