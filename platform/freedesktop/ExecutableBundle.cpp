#include "platform/freedesktop/ExecutableBundle.h"

#include <libintl.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "InfoPlist.h"
#include "platform/freedesktop/PlistFiles.h"

namespace vendril {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDomain = "vendril";
constexpr std::string_view kTable = "Localizable";

std::string runningExecutable() {
  std::error_code ignored;
  return withoutDeletionMark(fs::read_symlink("/proc/self/exe", ignored));
}

}  // namespace

ExecutableBundle::Parts ExecutableBundle::Parts::ofRunningProgram() {
  const std::string path = runningExecutable();
  const fs::path prefix = fs::path(path).parent_path().parent_path();
  return {path, kInfoPlist, prefix / "share" / "locale"};
}

ExecutableBundle::ExecutableBundle(Parts parts) : parts_(std::move(parts)) {}

std::optional<std::string> ExecutableBundle::bundleIdentifier() const {
  return infoString("CFBundleIdentifier");
}

std::optional<PropertyList> ExecutableBundle::objectForInfoDictionaryKey(
    std::string_view key) const {
  const auto entry = info().find(key);
  return entry != info().end() ? std::optional(entry->second) : std::nullopt;
}

std::string ExecutableBundle::localizedString(std::string_view key, std::string_view value,
                                              std::string_view table) const {
  // The empty message id is the catalogue's own header.
  if (table != kTable || key.empty()) {
    return std::string(value);
  }
  const std::string messageId(key);
  bindtextdomain(kDomain, parts_.localeDirectory.c_str());
  bind_textdomain_codeset(kDomain, "UTF-8");
  const char* text = dgettext(kDomain, messageId.c_str());
  // gettext answers with the message id itself when it finds nothing.
  return text != messageId.c_str() ? text : std::string(value);
}

const PropertyList::Dictionary& ExecutableBundle::info() const {
  if (!info_) {
    info_ = parseDictionary(parts_.infoPlist).value_or(PropertyList::Dictionary());
  }
  return *info_;
}

std::string withoutDeletionMark(const std::string& path) {
  constexpr std::string_view kMark = " (deleted)";
  std::error_code ignored;
  const bool isMarked = path.ends_with(kMark) && !fs::exists(path, ignored);
  return isMarked ? path.substr(0, path.size() - kMark.size()) : path;
}

}  // namespace vendril
