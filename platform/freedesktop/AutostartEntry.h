#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/freedesktop/DesktopEntry.h"

namespace vendril {

/// What an entry of ours is to say.
struct AutostartEntryContent {
  std::string name;
  std::string icon;
  /// The absolute path of the program.
  std::string program;
  /// Whether the program is asked to start without a window; nothing leaves it open.
  std::optional<bool> hideOnLaunch;
};

/// The text of a new autostart entry.
std::string newAutostartEntry(const AutostartEntryContent& content);

/// The text of an entry with the program of `content`. Everything else that it says stays, among it
/// that it is switched off. Nothing when the entry does not parse.
std::optional<std::string> withProgram(const std::string& entry,
                                       const AutostartEntryContent& content);

/// The text of an entry as it stands for one that was removed. Of an entry that does not parse
/// nothing but that is kept.
std::string asRemoved(const std::string& entry);

/// True for an entry made by `asRemoved`. A user who switches an entry off makes no such entry.
bool isRemoved(const DesktopEntry& entry);

}  // namespace vendril
