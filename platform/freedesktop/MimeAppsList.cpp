#include "platform/freedesktop/MimeAppsList.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/freedesktop/BoundedFile.h"

namespace vendril {
namespace {

/// The cache of a system with every application there is stays well below.
constexpr std::size_t kLargestList = std::size_t{4} << 20U;

bool isMissing(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 && errno == ENOENT;
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
  std::optional<std::string> text = readBoundedFile(path, kLargestList);
  if (!text && isMissing(path)) {
    text.emplace();
  }
  return text ? parse(std::move(*text)) : std::nullopt;
}

std::vector<std::string> MimeAppsList::applications(const char* group,
                                                    const std::string& type) const {
  gsize count = 0;
  const GStrvPtr ids(g_key_file_get_string_list(file_.get(), group, type.c_str(), &count, nullptr));
  return ids ? std::vector<std::string>(ids.get(), ids.get() + count) : std::vector<std::string>();
}

bool MimeAppsList::names(const char* group, const std::string& type) const {
  return g_key_file_has_key(file_.get(), group, type.c_str(), nullptr) != FALSE;
}

}  // namespace vendril
