#pragma once

#include "platform/SessionLoginItems.h"

namespace vendril {

/// Hands every operation on to another SessionLoginItems, which outlives this one. A test that
/// breaks one operation overrides that one.
class ForwardingSessionLoginItems : public SessionLoginItems {
 public:
  explicit ForwardingSessionLoginItems(SessionLoginItems& target) : target_(target) {}

  std::vector<Item> copySnapshot() override { return target_.copySnapshot(); }
  Item insertItemAtEnd(const Url& url, const PropertyList::Dictionary& properties) override {
    return target_.insertItemAtEnd(url, properties);
  }
  std::int32_t remove(const Item& item) override { return target_.remove(item); }

 private:
  SessionLoginItems& target_;
};

}  // namespace vendril
