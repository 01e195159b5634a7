#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Bundle.h"
#include "platform/SessionLoginItems.h"
#include "platform/freedesktop/AutostartDirectories.h"
#include "platform/freedesktop/AutostartEntry.h"
#include "platform/freedesktop/XdgPaths.h"

namespace vendril {

/// The XDG autostart directories as the list of login items: one item for each entry that is an
/// application and is not hidden. The entries of the bundle itself count even when they are hidden
/// or blank: who switched the application off has made up their mind about it.
class AutostartLoginItems : public SessionLoginItems {
 public:
  /// Keeps `bundle`, which names the application's own entries.
  explicit AutostartLoginItems(const Bundle& bundle,
                               const XdgPaths& paths = XdgPaths::fromEnvironment());

  std::vector<Item> copySnapshot() override;

  /// Writes an entry to the user's directory under the bundle's lower-case identifier. Should that
  /// name be taken, by an entry whose program exists or by something that is no entry, "-2" and so
  /// on are tried. An entry whose program has gone gets the new one and stays as it is otherwise.
  Item insertItemAtEnd(const Url& url, const PropertyList::Dictionary& properties) override;

  /// Deletes a user's entry and masks a system's one. The result is 0 or a value of errno.
  std::int32_t remove(const Item& item) override;

 private:
  bool isItem(const AutostartFile& file) const;
  bool isOwn(std::string_view name) const;
  Item makeItem(AutostartFile file) const;
  bool makeUsersDirectory() const;
  std::optional<std::string> textUnder(const std::string& name,
                                       const AutostartEntryContent& content) const;
  Item write(const std::string& name, const std::string& text) const;
  std::int32_t mask(const AutostartFile& systems) const;

  const Bundle& bundle_;
  AutostartDirectories directories_;
};

}  // namespace vendril
