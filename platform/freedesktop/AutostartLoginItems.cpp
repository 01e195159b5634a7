#include "platform/freedesktop/AutostartLoginItems.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/freedesktop/AtomicFile.h"
#include "platform/freedesktop/AutostartEntry.h"

namespace vendril {
namespace {

constexpr std::string_view kSuffix = ".desktop";

class AutostartItem : public LoginItem {
 public:
  /// `target` stands for the one that the file does not name.
  AutostartItem(AutostartFile file, std::optional<Url> target)
      : file_(std::move(file)), target_(std::move(target)) {}

  const AutostartFile& file() const { return file_; }

  std::optional<std::string> displayName() const override {
    return file_.entry ? file_.entry->name() : std::nullopt;
  }

  ResolvedUrl resolvedUrl() const override {
    if (target_) {
      return {target_, std::nullopt};
    }
    const DesktopEntry::Program program = file_.entry->program();
    if (!program.path) {
      return {std::nullopt, fmt::format("{}: {}", file_.path, program.error)};
    }
    return {Url::fileUrlWithPath(*program.path), std::nullopt};
  }

 private:
  AutostartFile file_;
  std::optional<Url> target_;
};

/// The names that the application's own entries may have, in the order in which they are tried.
std::string ownName(const std::string& id, int number) {
  return number == 1 ? fmt::format("{}{}", id, kSuffix)
                     : fmt::format("{}-{}{}", id, number, kSuffix);
}

bool isListed(const DesktopEntry& entry) {
  return entry.isApplication() && !entry.isHidden();
}

/// True when the file only says that something is switched off, and not what.
bool namesNoTarget(const AutostartFile& file) {
  return file.isBlank || (file.entry->isHidden() && !file.entry->string("Exec"));
}

std::optional<bool> hideOnLaunch(const PropertyList::Dictionary& properties) {
  const auto property = properties.find(SessionLoginItems::kHideOnLaunch);
  const bool* value = property != properties.end() ? property->second.get<bool>() : nullptr;
  return value != nullptr ? std::optional(*value) : std::nullopt;
}

}  // namespace

AutostartLoginItems::AutostartLoginItems(const Bundle& bundle, const XdgPaths& paths)
    : bundle_(bundle), directories_(paths) {}

std::vector<SessionLoginItems::Item> AutostartLoginItems::copySnapshot() {
  std::vector<Item> items;
  for (AutostartFile& file : directories_.files()) {
    if (isItem(file)) {
      items.push_back(makeItem(std::move(file)));
    }
  }
  return items;
}

SessionLoginItems::Item AutostartLoginItems::insertItemAtEnd(
    const Url& url, const PropertyList::Dictionary& properties) {
  const std::string id = bundle_.lowercaseIdentifier();
  const std::optional<std::string> program = url.fileSystemPath();
  if (id.empty() || !program || !makeUsersDirectory()) {
    return nullptr;
  }
  const AutostartEntryContent content{.name = bundle_.infoString("CFBundleName").value_or(id),
                                      .icon = id,
                                      .program = *program,
                                      .hideOnLaunch = hideOnLaunch(properties)};
  constexpr int kMostNames = 100;  // nobody has as many installations
  for (int number = 1; number <= kMostNames; ++number) {
    const std::string name = ownName(id, number);
    if (const auto text = textUnder(name, content)) {
      return write(name, *text);
    }
  }
  return nullptr;
}

std::int32_t AutostartLoginItems::remove(const Item& item) {
  const auto* removed = dynamic_cast<const AutostartItem*>(item.get());
  if (removed == nullptr) {
    return EINVAL;
  }
  const AutostartFile& file = removed->file();
  if (file.isUsers && unlink(file.path.c_str()) != 0) {
    return errno;
  }
  // What the user's file overrode would come back.
  const std::optional<AutostartFile> systems = directories_.findSystems(file.name);
  return systems && isItem(*systems) ? mask(*systems) : 0;
}

/// True when the file is in the list. An own entry stays there when it is switched off.
bool AutostartLoginItems::isItem(const AutostartFile& file) const {
  if (!file.entry) {
    return file.isBlank && isOwn(file.name);
  }
  return isListed(*file.entry) ||
         (file.entry->isHidden() && !isRemoved(*file.entry) && isOwn(file.name));
}

bool AutostartLoginItems::isOwn(std::string_view name) const {
  const std::string id = bundle_.lowercaseIdentifier();
  if (id.empty() || !name.starts_with(id) || !name.ends_with(kSuffix)) {
    return false;
  }
  name.remove_prefix(id.size());
  name.remove_suffix(kSuffix.size());
  return name.empty() || (name.size() > 1 && name.front() == '-' &&
                          name.find_first_not_of("0123456789", 1) == name.npos);
}

SessionLoginItems::Item AutostartLoginItems::makeItem(AutostartFile file) const {
  // Only an own entry is listed without a target: it is about this very program.
  std::optional<Url> target;
  if (isOwn(file.name) && namesNoTarget(file)) {
    target = Url::fileUrlWithPath(bundle_.bundlePath());
  }
  return std::make_shared<AutostartItem>(std::move(file), std::move(target));
}

bool AutostartLoginItems::makeUsersDirectory() const {
  const std::string& directory = directories_.users();
  return !directory.empty() && g_mkdir_with_parents(directory.c_str(), S_IRWXU) == 0;
}

/// The text that the new entry has under `name`; nothing when the name is taken.
std::optional<std::string> AutostartLoginItems::textUnder(
    const std::string& name, const AutostartEntryContent& content) const {
  const std::optional<AutostartFile> file = directories_.find(name);
  if (!file || (file->entry && isRemoved(*file->entry))) {
    return newAutostartEntry(content);
  }
  const bool isAbandoned = file->entry && file->entry->isApplication() && !namesNoTarget(*file) &&
                           !file->entry->program().path;
  const std::optional<std::string> text =
      isAbandoned ? DesktopEntry::readText(file->path) : std::nullopt;
  return text ? withProgram(*text, content) : std::nullopt;
}

SessionLoginItems::Item AutostartLoginItems::write(const std::string& name,
                                                   const std::string& text) const {
  if (replaceFile(directories_.users() + "/" + name, text)) {
    return nullptr;
  }
  directories_.makeNewest(name);
  std::optional<AutostartFile> file = directories_.find(name);
  return file && isItem(*file) ? makeItem(std::move(*file)) : nullptr;
}

/// Overrides a system's entry by a user's one that says that it is removed.
std::int32_t AutostartLoginItems::mask(const AutostartFile& systems) const {
  // A blank one may be a device, which has no text to be read.
  const std::optional<std::string> text =
      systems.isBlank ? std::string() : DesktopEntry::readText(systems.path);
  if (!text || !makeUsersDirectory()) {
    return EIO;
  }
  return replaceFile(directories_.users() + "/" + systems.name, asRemoved(*text)).value();
}

}  // namespace vendril
