#include "tools/checks/LoginItemCheck.h"

#include <fmt/format.h>

#include "launcher/ZQN5Launcher.h"
#include "platform/Host.h"
#include "platform/SessionLoginItems.h"
#include "platform/freedesktop/AutostartDirectories.h"

namespace vendril::tools {
namespace {

LoginItemFacts::Stale staleItem(const LoginItem& item) {
  const ResolvedUrl target = item.resolvedUrl();
  return {item.displayName().value_or(""),
          target.url ? target.url->absoluteString() : target.error.value_or("")};
}

/// Desktops switch an entry off in one of these ways.
bool isSwitchedOff(const AutostartFile& file) {
  constexpr const char* kEnabled = "X-GNOME-Autostart-enabled";
  return file.isBlank ||
         (file.entry && (file.entry->isHidden() || file.entry->string(kEnabled) == "false"));
}

/// Why the entry starts nothing; nothing when it starts something.
std::optional<std::string> errorOf(const AutostartFile& file) {
  if (!file.entry) {
    return "it is no desktop entry";
  }
  const DesktopEntry::Program program = file.entry->program();
  return program.path ? std::nullopt : std::optional(program.error);
}

/// The entry that starts this very installation; of several, one that is not switched off. Where
/// there is none, the one under the agent's own name, unless it is that of another installation.
std::optional<AutostartFile> ownEntry(const Surroundings& surroundings) {
  const Url ownUrl = Url::fileUrlWithPath(surroundings.program);
  const AutostartDirectories directories(surroundings.paths);
  std::optional<AutostartFile> own;
  for (AutostartFile& file : directories.files()) {
    const std::optional<std::string> program =
        file.entry ? file.entry->program().path : std::nullopt;
    if (program && Url::fileUrlWithPath(*program) == ownUrl && (!own || isSwitchedOff(*own))) {
      own = std::move(file);
    }
  }
  if (!own) {
    own = directories.find(surroundings.id + ".desktop");
    if (own && own->entry && own->entry->program().path) {
      own.reset();
    }
  }
  return own;
}

}  // namespace

LoginItemFacts loginItemFacts(const Surroundings& surroundings) {
  LoginItemFacts facts;
  facts.command = surroundings.mendingBy("login-item");
  facts.isOn = ZQN5Launcher::launchOnLogin();
  if (const auto file = ownEntry(surroundings)) {
    facts.path = file->path;
    facts.isSwitchedOff = isSwitchedOff(*file);
    facts.error = facts.isSwitchedOff ? std::nullopt : errorOf(*file);
  }
  for (const auto& item : Host::current().sessionLoginItems().copySnapshot()) {
    if (ZQN5Launcher::isStaleLoginItem(*item, {})) {
      facts.stale.push_back(staleItem(*item));
    }
  }
  return facts;
}

Check loginItemCheck(const LoginItemFacts& facts) {
  const std::string on = facts.command + " on";
  Check check{"login-item", "on", Level::ok, "the agent starts at login", std::nullopt, {}};
  if (!facts.path.empty()) {
    check.details.emplace("path", facts.path);
  }
  if (facts.isSwitchedOff) {
    check.find("switched-off", Level::note,
               facts.path + " has been switched off; the first link starts the agent");
    check.remedy = on;
  } else if (facts.error && !facts.isOn) {
    check.find("broken", Level::warning, facts.path + " starts nothing: " + *facts.error);
    check.remedy = on;
  } else if (!facts.isOn) {
    check.find("off", Level::note, "the agent does not start at login; the first link starts it");
    check.remedy = on;
  }
  return check;
}

Check staleLoginItemsCheck(const LoginItemFacts& facts) {
  Check check{"stale-login-items", "none", Level::ok, "no item of an earlier installation is left",
              std::nullopt,        {}};
  PropertyList::Array items;
  for (const LoginItemFacts::Stale& item : facts.stale) {
    items.push_back(PropertyList::Dictionary{{"name", item.name}, {"target", item.target}});
  }
  check.details.emplace("items", items);
  if (!facts.stale.empty()) {
    check.find("found", Level::warning,
               fmt::format("left by an earlier installation: {} ({})", facts.stale.front().name,
                           facts.stale.front().target));
    if (facts.stale.size() > 1) {
      check.summary += fmt::format(" and {} more", facts.stale.size() - 1);
    }
    check.remedy = facts.command + " clean";
  }
  return check;
}

}  // namespace vendril::tools
