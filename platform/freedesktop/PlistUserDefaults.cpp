#include "platform/freedesktop/PlistUserDefaults.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/MessageFormat.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

namespace fs = std::filesystem;

bool makeDirectoryOf(const std::string& path) {
  constexpr int kForTheUserAlone = 0700;
  return g_mkdir_with_parents(fs::path(path).parent_path().c_str(), kForTheUserAlone) == 0;
}

}  // namespace

PlistUserDefaults::PlistUserDefaults(std::optional<std::string> path,
                                     const PropertyListFiles& files, SystemLog& log)
    : path_(std::move(path)), files_(files), log_(log) {}

std::optional<std::string> PlistUserDefaults::stringForKey(std::string_view key) {
  const auto entry = values().find(key);
  const auto* text = entry != values().end() ? entry->second.get<std::string>() : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

void PlistUserDefaults::setObject(const std::optional<std::string>& value, std::string_view key) {
  const auto entry = values().find(key);
  if (value) {
    if (stringForKey(key) != value) {
      values().insert_or_assign(std::string(key), *value);
      isChanged_ = true;
    }
  } else if (entry != values().end()) {
    values().erase(entry);
    isChanged_ = true;
  }
}

bool PlistUserDefaults::synchronize() {
  if (!path_) {
    return false;
  }
  if (isChanged_) {
    isChanged_ = !makeDirectoryOf(*path_) || !files_.writeDictionary(values(), *path_);
  }
  return !isChanged_;
}

PropertyList::Dictionary& PlistUserDefaults::values() {
  if (!values_) {
    values_ = read();
  }
  return *values_;
}

PropertyList::Dictionary PlistUserDefaults::read() const {
  std::optional<PropertyList::Dictionary> stored;
  if (path_) {
    stored = files_.dictionaryWithContentsOfFile(*path_);
    std::error_code ignored;
    if (!stored && fs::exists(*path_, ignored)) {
      log_.write(formatMessage(
          "User defaults: cannot read '%@'; it counts as empty and the next change replaces it.",
          *path_));
    }
  }
  return stored.value_or(PropertyList::Dictionary());
}

std::optional<std::string> userDefaultsPath(const UserDirectories& directories,
                                            std::string_view desktopId) {
  const std::vector<std::string> libraries = directories.libraryDirectories();
  if (libraries.empty()) {
    return std::nullopt;
  }
  return fs::path(libraries.front()) / "Preferences" / (std::string(desktopId) + ".plist");
}

}  // namespace vendril
