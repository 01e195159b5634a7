#pragma once

#include <string>

#include "platform/Bundle.h"

namespace vendril {

/// The bundle of a program that is one file: its path is the executable's, its information file is
/// embedded in it, and its localized texts are the gettext catalogues installed beside it.
class ExecutableBundle : public Bundle {
 public:
  /// What a bundle is made of.
  struct Parts {
    std::string executablePath;
    /// A property list; read once, on first use.
    std::string_view infoPlist;
    /// The directory that holds LANGUAGE/LC_MESSAGES/vendril.mo.
    std::string localeDirectory;

    /// Those of the running program. Catalogues are looked for in ../share/locale seen from the
    /// executable's directory. Its path is what it was started as; when an upgrade has replaced the
    /// file since then, it is the path of the new one.
    static Parts ofRunningProgram();
  };

  explicit ExecutableBundle(Parts parts = Parts::ofRunningProgram());

  std::string bundlePath() const override { return parts_.executablePath; }
  std::optional<std::string> bundleIdentifier() const override;
  std::optional<PropertyList> objectForInfoDictionaryKey(std::string_view key) const override;
  /// The table "Localizable" is the message domain "vendril", with the keys as message ids. Texts
  /// come in UTF-8 whatever the locale.
  std::string localizedString(std::string_view key, std::string_view value,
                              std::string_view table) const override;

 private:
  const PropertyList::Dictionary& info() const;

  Parts parts_;
  mutable std::optional<PropertyList::Dictionary> info_;
};

/// The path of an executable as the kernel tells it, without the mark that it puts behind the path
/// of a file that is there no more.
std::string withoutDeletionMark(const std::string& path);

}  // namespace vendril
