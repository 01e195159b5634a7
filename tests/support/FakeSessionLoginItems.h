#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/SessionLoginItems.h"

namespace vendril {

/// A login item whose every answer is a plain member.
class FakeLoginItem : public LoginItem {
 public:
  std::optional<std::string> name;
  std::optional<Url> target;
  std::optional<std::string> error;
  PropertyList::Dictionary properties;

  std::optional<std::string> displayName() const override { return name; }
  ResolvedUrl resolvedUrl() const override { return {target, error}; }
};

/// A list of login items in memory.
class FakeSessionLoginItems : public SessionLoginItems {
 public:
  std::vector<std::shared_ptr<FakeLoginItem>> items;
  /// Faults: an insertion returns no item; a removal answers this status and removes nothing.
  bool refusesInsertion = false;
  std::int32_t removalStatus = 0;
  /// What was asked, in order: "snapshot", "insert URL", "remove NAME".
  std::vector<std::string> history;

  /// Adds an item that points to `path`; to nothing when the path is empty.
  std::shared_ptr<FakeLoginItem> add(std::optional<std::string> name, const std::string& path,
                                     std::optional<std::string> error = std::nullopt) {
    auto item = std::make_shared<FakeLoginItem>();
    item->name = std::move(name);
    item->error = std::move(error);
    if (!path.empty()) {
      item->target = Url::fileUrlWithPath(path);
    }
    items.push_back(item);
    return item;
  }

  std::vector<Item> copySnapshot() override {
    history.emplace_back("snapshot");
    return {items.begin(), items.end()};
  }

  Item insertItemAtEnd(const Url& url, const PropertyList::Dictionary& properties) override {
    history.push_back("insert " + url.absoluteString());
    if (refusesInsertion) {
      return nullptr;
    }
    auto item = std::make_shared<FakeLoginItem>();
    item->name = "Vendril";
    item->target = url;
    item->properties = properties;
    items.push_back(item);
    return item;
  }

  std::int32_t remove(const Item& item) override {
    history.push_back("remove " + item->displayName().value_or("(null)"));
    if (removalStatus == 0) {
      std::erase(items, item);
    }
    return removalStatus;
  }
};

}  // namespace vendril
