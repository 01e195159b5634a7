// A desktop entry among the login items, and the program in its Exec line.

#include <glib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "fuzz/KeyFiles.h"
#include "platform/Utf8.h"
#include "platform/freedesktop/AutostartEntry.h"
#include "platform/freedesktop/AutostartLoginItems.h"
#include "platform/freedesktop/DesktopExec.h"
#include "support/FakeBundle.h"
#include "support/TemporaryDirectory.h"

namespace vendril::fuzz {
namespace {

constexpr const char* kOwnFile = "config/autostart/com.brelto.vendril.desktop";
constexpr const char* kSystemsFile = "system/autostart/other.desktop";
constexpr const char* kMaskFile = "config/autostart/other.desktop";
constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;
constexpr std::string_view kProgram = "/bin/true";

/// The autostart directories of a user and of the system, as good as new.
class Desktop {
 public:
  Desktop() {
    std::filesystem::remove_all(directory().path() + "/config");
    std::filesystem::create_directories(directory() / "config/autostart");
    std::filesystem::create_directories(directory() / "system/autostart");
    bundle_.path = kProgram;
  }

  static const TemporaryDirectory& directory() {
    static const TemporaryDirectory kDirectory;
    return kDirectory;
  }

  AutostartLoginItems& items() { return items_; }

  std::optional<DesktopEntry> entry(const char* name) const {
    return DesktopEntry::read(directory() / name);
  }

 private:
  FakeBundle bundle_;
  AutostartLoginItems items_{bundle_, XdgPaths{.configHome = directory() / "config",
                                               .configDirs = {directory() / "system"},
                                               .dataHome = {},
                                               .dataDirs = {},
                                               .currentDesktops = {}}};
};

bool beginsWithEntry(const GKeyFilePtr& file) {
  const GCharPtr start(g_key_file_get_start_group(file.get()));
  return g_strcmp0(start.get(), kGroup) == 0;
}

/// Requires that an entry was changed in no other keys than these.
void requireKept(const std::string& before, const std::string& after,
                 const std::vector<std::string_view>& changedKeys) {
  requireSameValues(before, after, [&](std::string_view group, std::string_view key) {
    return group == kGroup &&
           std::find(changedKeys.begin(), changedKeys.end(), key) != changedKeys.end();
  });
}

void checkProgram(const DesktopEntry::Program& program) {
  require(program.path.has_value() == program.error.empty(),
          "An entry leads to a program or to a reason why not");
  require(
      !program.path || (program.path->starts_with('/') && std::filesystem::exists(*program.path)),
      "A program is the absolute path of a file");
  requireOneRecord(program.error);
}

/// Requires that a program of this name can be named by an entry of ours.
void checkWritten(const std::string& name) {
  const std::string path = "/" + name;
  if (!isValidUtf8(path) || path.find('\0') != path.npos) {
    return;
  }
  require(programOfExec(execForProgram(path)).program == path,
          "A program comes back from the Exec line that is written for it");
  const auto entry = DesktopEntry::parse(
      newAutostartEntry({.name = "V", .icon = "v", .program = path, .hideOnLaunch = true}));
  require(entry && programOfExec(entry->string("Exec").value_or("")).program == path,
          "A program comes back from the entry that is written for it");
}

void checkText(const std::string& text) {
  const GKeyFilePtr all = parseKeyFile(text);
  const auto entry = DesktopEntry::parse(text);
  require(entry.has_value() == (all != nullptr && beginsWithEntry(all)),
          "An entry parses when it does with all its translations");
  const auto healed = withProgram(
      text, {.name = "", .icon = "", .program = std::string(kProgram), .hideOnLaunch = true});
  require(healed.has_value() == (all != nullptr), "An entry that parses can be given a program");
  if (!entry) {
    return;
  }
  require(isValidUtf8(entry->name().value_or("")), "A name is UTF-8");
  checkProgram(entry->program());
  checkWritten(entry->string("Exec").value_or(""));
  requireKept(text, *healed, {"Exec", "TryExec", "X-LoginItem-HideOnLaunch"});
  const auto reread = DesktopEntry::parse(*healed);
  require(reread && reread->program().path == kProgram, "A healed entry leads to the program");
  requireKept(text, asRemoved(text), {"Hidden", "X-LoginItem-Removed"});
  const auto removed = DesktopEntry::parse(asRemoved(text));
  require(removed && isRemoved(*removed), "A removed entry says so");
}

bool meansUs(const SessionLoginItems::Item& item) {
  return item->resolvedUrl().url == Url::fileUrlWithPath(kProgram);
}

/// The text as the user's own entry of our application.
void checkInsertion(const std::string& text) {
  Desktop desktop;
  std::filesystem::remove(Desktop::directory() / kSystemsFile);
  Desktop::directory().write(kOwnFile, text);
  const auto before = desktop.items().copySnapshot();
  const auto item = desktop.items().insertItemAtEnd(Url::fileUrlWithPath(kProgram),
                                                    {{SessionLoginItems::kHideOnLaunch, true}});
  require(item && meansUs(item), "Our application can be inserted whatever stands in its place");
  const auto after = desktop.items().copySnapshot();
  require(!after.empty() && meansUs(after.back()), "A new item is the last one");
  require(after.size() <= before.size() + 1, "One item is inserted");
  require(desktop.entry(kOwnFile).has_value() || Desktop::directory().read(kOwnFile) == text,
          "An entry that cannot be read stays as it is");
  for (const auto& each : after) {
    require(desktop.items().remove(each) == 0, "An item can be removed");
  }
  require(desktop.items().copySnapshot().empty(), "Items that were removed are gone");
}

/// The text as an entry of the system.
void checkMasking(const std::string& text) {
  Desktop desktop;
  Desktop::directory().write(kSystemsFile, text);
  const auto items = desktop.items().copySnapshot();
  require(items.size() <= 1, "One file is one item at most");
  for (const auto& item : items) {
    requireOneRecord(item->displayName().value_or(""));
    requireOneRecord(item->resolvedUrl().error.value_or(""));
    require(desktop.items().remove(item) == 0, "An item of the system can be removed");
    require(desktop.items().copySnapshot().empty(),
            "An item of the system that was removed is gone");
    const auto mask = desktop.entry(kMaskFile);
    require(mask && isRemoved(*mask), "A file of the user hides the system's entry");
  }
  require(Desktop::directory().read(kSystemsFile) == text, "The system's entry stays as it is");
}

}  // namespace

void check(std::string_view input) {
  // The language of the user, whose translations count.
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  unsetenv("LANGUAGE");
  setenv("PATH", "/bin", 1);
  const std::string text(input);
  const std::string line = text.substr(0, text.find_first_of(std::string_view("\0\n", 2)));
  const ExecProgram named = programOfExec(line);
  require(named.program.has_value() == named.error.empty(), "An Exec line names a program or not");
  checkWritten(line);
  checkText(text);
  checkInsertion(text);
  checkMasking(text);
}

}  // namespace vendril::fuzz
