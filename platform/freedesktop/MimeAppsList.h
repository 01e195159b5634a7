#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// One of the lists that say which application opens what: `mimeapps.list`, its desktop-specific
/// forms, or `mimeinfo.cache`. Immutable.
class MimeAppsList {
 public:
  static constexpr const char* kDefaultApplications = "Default Applications";
  static constexpr const char* kAddedAssociations = "Added Associations";
  static constexpr const char* kRemovedAssociations = "Removed Associations";
  static constexpr const char* kMimeCache = "MIME Cache";

  /// Reads the text of a list; nothing when a line of it does not parse.
  static std::optional<MimeAppsList> parse(std::string text);

  /// Reads the list at `path`. One that does not exist is empty; nothing when it cannot be read,
  /// is not a regular file, is over 4 MiB, or does not parse.
  static std::optional<MimeAppsList> read(const std::string& path);

  /// What the list at `path` says about `types` alone: as above, but without its text, and a list
  /// that mentions none of them counts as empty whether it parses or not. A cache has thousands of
  /// entries for other types, which are not taken apart.
  static std::optional<MimeAppsList> readAbout(const std::set<std::string>& types,
                                               const std::string& path);

  /// The desktop file ids that `group` gives for `type`, in their order.
  std::vector<std::string> applications(const char* group, const std::string& type) const;
  /// True when `group` has an entry for `type`.
  bool names(const char* group, const std::string& type) const;

  const std::string& text() const { return text_; }

 private:
  MimeAppsList(std::string text, GKeyFilePtr file)
      : text_(std::move(text)), file_(std::move(file)) {}

  std::string text_;
  /// Null when the list says nothing.
  GKeyFilePtr file_;
};

/// The text of a list with `id` as the first application of `type` in `group`. `text` has to parse.
/// Every line but the one for `type` stays as it is, byte for byte; so do the other applications on
/// that line, but for those that make it unreadable. The same text comes back when the application
/// is the first one already.
std::string withApplicationFirst(std::string_view text, std::string_view group,
                                 std::string_view type, std::string_view id);

/// The text of a list without `id` among the applications of `type` in `group`; else as above.
std::string withoutApplication(std::string_view text, std::string_view group, std::string_view type,
                               std::string_view id);

}  // namespace vendril
