#include "platform/freedesktop/DesktopEntry.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/freedesktop/BoundedFile.h"
#include "platform/freedesktop/DesktopExec.h"

namespace vendril {
namespace {

/// Far above any entry with all its translations.
constexpr std::size_t kLargestEntry = std::size_t{1} << 20U;

/// True for a key that GKeyFile takes in front of a language.
bool isTranslatedKey(std::string_view key) {
  constexpr std::string_view kNotInKey("]\0", 2);
  return !key.empty() && g_ascii_isspace(key.back()) == 0 &&
         key.find_first_of(kNotInKey) == key.npos;
}

/// True for a language of the letters that GKeyFile takes in one.
bool isLanguage(std::string_view text) {
  static constexpr std::string_view kMarks = "-_.@";
  return std::all_of(text.begin(), text.end(), [](char c) {
    return g_ascii_isalnum(c) != 0 || kMarks.find(c) != kMarks.npos;
  });
}

/// The language in a line such as "Name[de]=..."; nothing when it has none, or is malformed.
std::string_view languageOf(std::string_view line) {
  const std::size_t end = line.find("]=");
  const std::size_t begin = line.find('[');
  if (end == line.npos || begin > end || line.find('=') != end + 1) {
    return {};
  }
  const std::string_view language = line.substr(begin + 1, end - begin - 1);
  return isTranslatedKey(line.substr(0, begin)) && isLanguage(language) ? language
                                                                        : std::string_view();
}

/// True for a line with a key of the standard that nobody here asks for, and that GKeyFile takes
/// whatever its value is.
bool isBesideThePoint(std::string_view line) {
  static constexpr std::array<std::string_view, 7> kAskedFor{G_KEY_FILE_DESKTOP_KEY_TYPE,
                                                             G_KEY_FILE_DESKTOP_KEY_NAME,
                                                             G_KEY_FILE_DESKTOP_KEY_EXEC,
                                                             G_KEY_FILE_DESKTOP_KEY_TRY_EXEC,
                                                             G_KEY_FILE_DESKTOP_KEY_HIDDEN,
                                                             G_KEY_FILE_DESKTOP_KEY_MIME_TYPE,
                                                             "Encoding"};
  const std::string_view key = line.substr(0, std::min(line.find('='), line.size()));
  return key.size() < line.size() && !key.empty() && !key.starts_with("X-") &&
         std::all_of(key.begin(), key.end(), [](char c) { return g_ascii_isalnum(c) != 0; }) &&
         std::find(kAskedFor.begin(), kAskedFor.end(), key) == kAskedFor.end();
}

/// `text` without the translations into languages that the user does not read, and without keys
/// that are beside the point here. GKeyFile would take them apart first: an entry may have hundreds
/// of them. A line for which GKeyFile rejects the whole text stays: a malformed one, and one in
/// front of all groups.
std::string relevantPartOf(std::string_view text) {
  const gchar* const* languages = g_get_language_names();
  std::string result;
  result.reserve(text.size());
  bool isInGroup = false;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
    isInGroup = isInGroup || line.starts_with('[');
    const std::string language(isInGroup ? languageOf(line) : std::string_view());
    const bool isForeign =
        !language.empty() && g_strv_contains(languages, language.c_str()) == FALSE;
    if (!isInGroup || !(isForeign || isBesideThePoint(line))) {
      result += line;
    }
    text.remove_prefix(line.size());
  }
  return result;
}

std::optional<std::string> take(gchar* text) {
  const GCharPtr owner(text);
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const std::string& path) {
  const std::optional<std::string> text = readText(path);
  return text ? parse(*text) : std::nullopt;
}

std::optional<std::string> DesktopEntry::readText(const std::string& path) {
  return readBoundedFile(path, kLargestEntry);
}

std::optional<DesktopEntry> DesktopEntry::parse(const std::string& bytes) {
  const std::string text = relevantPartOf(bytes);
  GKeyFilePtr file(g_key_file_new());
  if (g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) ==
          FALSE ||
      take(g_key_file_get_start_group(file.get())) != G_KEY_FILE_DESKTOP_GROUP) {
    return std::nullopt;
  }
  return DesktopEntry(std::move(file));
}

std::optional<std::string> DesktopEntry::name() const {
  constexpr const char* kName = G_KEY_FILE_DESKTOP_KEY_NAME;
  std::optional<std::string> text = take(
      g_key_file_get_locale_string(file_.get(), G_KEY_FILE_DESKTOP_GROUP, kName, nullptr, nullptr));
  if (text) {
    return text;
  }
  const std::optional<std::string> bytes =
      take(g_key_file_get_value(file_.get(), G_KEY_FILE_DESKTOP_GROUP, kName, nullptr));
  return bytes ? take(g_utf8_make_valid(bytes->data(), static_cast<gssize>(bytes->size())))
               : std::nullopt;
}

std::optional<std::string> DesktopEntry::string(const char* key) const {
  return has(key) ? take(g_key_file_get_string(file_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr))
                  : std::nullopt;
}

bool DesktopEntry::boolean(const char* key) const {
  return has(key) &&
         g_key_file_get_boolean(file_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
}

DesktopEntry::Program DesktopEntry::program() const {
  const Trial trial = tryExec();
  if (trial.error) {
    return {std::nullopt, *trial.error};
  }
  const std::optional<std::string> exec = string(G_KEY_FILE_DESKTOP_KEY_EXEC);
  if (!exec) {
    return {std::nullopt, "There is no readable Exec"};
  }
  const ExecProgram named = programOfExec(*exec);
  if (!named.program) {
    return {std::nullopt, fmt::format("Exec does not parse: {}", named.error)};
  }
  // Most entries try the program that they start, which need not be looked for again.
  const std::optional<std::string> path =
      named.program == trial.program ? trial.path : findExecutable(*named.program);
  return {path, path ? "" : fmt::format("The program '{}' does not exist", *named.program)};
}

bool DesktopEntry::isInstalledApplication() const {
  const bool namesProgram = !string(G_KEY_FILE_DESKTOP_KEY_EXEC).value_or("").empty();
  return isApplication() && (namesProgram ? program().path.has_value() : !tryExec().error);
}

bool DesktopEntry::has(const char* key) const {
  return g_key_file_has_key(file_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != FALSE;
}

DesktopEntry::Trial DesktopEntry::tryExec() const {
  const std::string tried = string(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC).value_or("");
  if (tried.empty()) {
    return {};
  }
  std::optional<std::string> path = findExecutable(tried);
  if (!path) {
    return {tried, path, fmt::format("The program '{}' of TryExec does not exist", tried)};
  }
  return {tried, std::move(path), std::nullopt};
}

}  // namespace vendril
