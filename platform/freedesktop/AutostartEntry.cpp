#include "platform/freedesktop/AutostartEntry.h"

#include <utility>

#include "platform/freedesktop/DesktopExec.h"
#include "platform/freedesktop/GlibPtr.h"

namespace vendril {
namespace {

constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* kHideOnLaunchKey = "X-LoginItem-HideOnLaunch";
constexpr const char* kRemovedKey = "X-LoginItem-Removed";

/// What the entry says, with its comments and translations; null when it does not parse. GKeyFile
/// would give what stands in front of the error.
GKeyFilePtr parseAll(const std::string& text) {
  GKeyFilePtr file(g_key_file_new());
  constexpr auto kAll =
      static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  const bool parses =
      g_key_file_load_from_data(file.get(), text.data(), text.size(), kAll, nullptr) != FALSE;
  return parses ? std::move(file) : nullptr;
}

/// An application of which nothing else is known.
GKeyFilePtr emptyEntry() {
  GKeyFilePtr file(g_key_file_new());
  g_key_file_set_string(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_TYPE,
                        G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  return file;
}

std::string textOf(const GKeyFilePtr& file) {
  gsize length = 0;
  const GCharPtr text(g_key_file_to_data(file.get(), &length, nullptr));
  return {text.get(), length};
}

void setProgram(const GKeyFilePtr& file, const AutostartEntryContent& content) {
  g_key_file_set_string(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_EXEC,
                        execForProgram(content.program).c_str());
  if (content.hideOnLaunch) {
    g_key_file_set_boolean(file.get(), kGroup, kHideOnLaunchKey, *content.hideOnLaunch ? 1 : 0);
  }
}

}  // namespace

std::string newAutostartEntry(const AutostartEntryContent& content) {
  const GKeyFilePtr file = emptyEntry();
  const auto set = [&file](const char* key, const std::string& value) {
    g_key_file_set_string(file.get(), kGroup, key, value.c_str());
  };
  set(G_KEY_FILE_DESKTOP_KEY_NAME, content.name);
  set(G_KEY_FILE_DESKTOP_KEY_ICON, content.icon);
  set(G_KEY_FILE_DESKTOP_KEY_TERMINAL, "false");
  set(G_KEY_FILE_DESKTOP_KEY_STARTUP_NOTIFY, "false");
  setProgram(file, content);
  return textOf(file);
}

std::optional<std::string> withProgram(const std::string& entry,
                                       const AutostartEntryContent& content) {
  const GKeyFilePtr file = parseAll(entry);
  if (!file) {
    return std::nullopt;
  }
  // Set and not removed: of a key that comes twice GKeyFile removes the last one alone.
  if (g_key_file_has_key(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, nullptr) != FALSE) {
    g_key_file_set_string(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC,
                          content.program.c_str());
  }
  setProgram(file, content);
  return textOf(file);
}

std::string asRemoved(const std::string& entry) {
  GKeyFilePtr file = parseAll(entry);
  if (!file) {
    file = emptyEntry();
  }
  g_key_file_set_boolean(file.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_HIDDEN, 1);
  g_key_file_set_boolean(file.get(), kGroup, kRemovedKey, 1);
  return textOf(file);
}

bool isRemoved(const DesktopEntry& entry) {
  return entry.isHidden() && entry.boolean(kRemovedKey);
}

}  // namespace vendril
