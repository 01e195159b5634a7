#include "platform/freedesktop/MimeAppsList.h"

#include <algorithm>

#include "platform/freedesktop/BoundedFile.h"

namespace vendril {
namespace {

/// The cache of a system with every application there is stays well below.
constexpr std::size_t kLargestList = std::size_t{4} << 20U;

/// The key of a line that GKeyFile takes whatever its value is; empty for any other line.
std::string_view plainKeyOf(std::string_view line) {
  const std::string_view key = line.substr(0, std::min(line.find('='), line.size()));
  const bool isPlain = key.size() < line.size() && std::all_of(key.begin(), key.end(), [](char c) {
                         return g_ascii_isalnum(c) != 0 ||
                                std::string_view("/.+-_").find(c) != std::string_view::npos;
                       });
  constexpr std::string_view kChecked = "Encoding";
  return isPlain && key != kChecked ? key : std::string_view();
}

/// `text` without the entries for other types than `types`. Each line for which GKeyFile may reject
/// the whole text stays: one that is no plain entry, and one in front of all groups.
std::string withoutOtherTypes(std::string_view text, const std::set<std::string>& types) {
  std::string result;
  bool isInGroup = false;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
    isInGroup = isInGroup || line.starts_with('[');
    const std::string_view key = isInGroup ? plainKeyOf(line) : std::string_view();
    if (key.empty() || std::any_of(types.begin(), types.end(),
                                   [key](const std::string& type) { return type == key; })) {
      result += line;
    }
    text.remove_prefix(line.size());
  }
  return result;
}

}  // namespace

std::optional<MimeAppsList> MimeAppsList::parse(std::string text) {
  GKeyFilePtr file(g_key_file_new());
  if (g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) ==
      FALSE) {
    return std::nullopt;
  }
  return MimeAppsList(std::move(text), std::move(file));
}

std::optional<MimeAppsList> MimeAppsList::read(const std::string& path) {
  std::optional<std::string> text = readBoundedFileIfAny(path, kLargestList);
  return text ? parse(std::move(*text)) : std::nullopt;
}

std::optional<MimeAppsList> MimeAppsList::readAbout(const std::set<std::string>& types,
                                                    const std::string& path) {
  const std::optional<std::string> text = readBoundedFileIfAny(path, kLargestList);
  if (!text) {
    return std::nullopt;
  }
  const bool mentionsOne = std::any_of(types.begin(), types.end(), [&](const std::string& type) {
    return text->find(type) != std::string::npos;
  });
  return mentionsOne ? parse(withoutOtherTypes(*text, types)) : MimeAppsList({}, nullptr);
}

std::vector<std::string> MimeAppsList::applications(const char* group,
                                                    const std::string& type) const {
  if (!names(group, type)) {
    return {};
  }
  gsize count = 0;
  const GStrvPtr ids(g_key_file_get_string_list(file_.get(), group, type.c_str(), &count, nullptr));
  return ids ? std::vector<std::string>(ids.get(), ids.get() + count) : std::vector<std::string>();
}

// Asked before each value, and the group before the key: GKeyFile composes a translated error for
// one that is missing.
bool MimeAppsList::names(const char* group, const std::string& type) const {
  return file_ && g_key_file_has_group(file_.get(), group) != FALSE &&
         g_key_file_has_key(file_.get(), group, type.c_str(), nullptr) != FALSE;
}

}  // namespace vendril
