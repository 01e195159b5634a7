#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/PropertyList.h"
#include "platform/Url.h"

namespace vendril {

/// What became of resolving a login item: its target, or none and perhaps the reason why.
struct ResolvedUrl {
  std::optional<Url> url;
  std::optional<std::string> error;
};

/// One item of the session's login items, as it stood when the snapshot was taken.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  /// The name that the desktop shows for the item; nothing when it has none.
  virtual std::optional<std::string> displayName() const = 0;

  /// Finds the item's target.
  virtual ResolvedUrl resolvedUrl() const = 0;
};

/// The programs that the desktop starts when the user logs in. Synchronous; main thread only.
class SessionLoginItems {
 public:
  /// The property of an inserted item that makes it start hidden; a boolean.
  static constexpr const char* kHideOnLaunch = "com.apple.loginitem.HideOnLaunch";

  using Item = std::shared_ptr<const LoginItem>;

  virtual ~SessionLoginItems() = default;

  /// Opens the list and takes a snapshot of its items, in the order of the list.
  virtual std::vector<Item> copySnapshot() = 0;

  /// Adds an item for `url` at the end of the list; null when that failed.
  virtual Item insertItemAtEnd(const Url& url, const PropertyList::Dictionary& properties) = 0;

  /// Removes an item of an earlier snapshot. 0 is success.
  virtual std::int32_t remove(const Item& item) = 0;
};

}  // namespace vendril
