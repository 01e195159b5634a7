#include "fuzz/KeyFiles.h"

#include "fuzz/FuzzTarget.h"

namespace vendril::fuzz {
namespace {

/// The raw value of a key, without a carriage return at its end: GKeyFile takes one for a part of
/// the value on a last line without a line feed, and for a part of the line end as soon as there is
/// one.
std::string valueOf(const GKeyFilePtr& file, const char* group, const char* key) {
  const GCharPtr text(g_key_file_get_value(file.get(), group, key, nullptr));
  std::string value(text ? text.get() : "(none)");
  while (value.ends_with('\r')) {
    value.pop_back();
  }
  return value;
}

}  // namespace

GKeyFilePtr parseKeyFile(std::string_view text) {
  GKeyFilePtr file(g_key_file_new());
  const bool parses = g_key_file_load_from_data(file.get(), text.data(), text.size(),
                                                G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) != FALSE;
  return parses ? std::move(file) : nullptr;
}

void requireSameValues(
    std::string_view before, std::string_view after,
    const std::function<bool(std::string_view group, std::string_view key)>& mayChange) {
  const GKeyFilePtr one = parseKeyFile(before);
  const GKeyFilePtr other = parseKeyFile(after);
  require(other != nullptr, "An edited file parses");
  const GStrvPtr groups(g_key_file_get_groups(one.get(), nullptr));
  for (char** group = groups.get(); *group != nullptr; ++group) {
    const GStrvPtr keys(g_key_file_get_keys(one.get(), *group, nullptr, nullptr));
    for (char** key = keys.get(); key != nullptr && *key != nullptr; ++key) {
      require(mayChange(*group, *key) || valueOf(one, *group, *key) == valueOf(other, *group, *key),
              "An edited file says the same about everything else");
    }
  }
}

}  // namespace vendril::fuzz
