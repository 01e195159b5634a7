#include "support/RoomRules.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string_view>

namespace vendril {
namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string, std::less<>>;

constexpr std::string_view kRealDesktop = "platform/freedesktop";
constexpr std::size_t kLongestHeader = 160;
constexpr std::size_t kLongestSource = 450;

/// The rooms and whose headers each of them may include, its own left out.
const std::map<std::string, Names, std::less<>> kRooms{
    {"app", {"protocol", "logging", "config", "launcher", "platform"}},
    {"protocol", {"platform"}},
    {"logging", {"platform"}},
    {"config", {"platform"}},
    {"launcher", {"platform"}},
    {"platform", {}},
    {std::string(kRealDesktop), {"platform"}},
    {"alert", {}},
    {"portal", {}},
    {"tools",
     {"app", "protocol", "logging", "config", "launcher", "platform", std::string(kRealDesktop)}}};

/// Folders beside the rooms, which may include anything.
const Names kFreeFolders{"tests", "bench"};

/// The room or folder that a path from the root lies in; nothing outside of them.
std::optional<std::string> roomOf(std::string_view path) {
  if (path.starts_with(std::string(kRealDesktop) + "/")) {
    return std::string(kRealDesktop);
  }
  const std::size_t slash = path.find('/');
  const std::string first(path.substr(0, slash == std::string_view::npos ? 0 : slash));
  const bool known = kRooms.contains(first) || kFreeFolders.contains(first);
  return known ? std::optional(first) : std::nullopt;
}

bool isHeader(const fs::path& path) {
  return path.extension() == ".h" || path.extension() == ".hpp";
}

bool isCxxFile(const fs::path& path) {
  const Names kSources{".cpp", ".cc", ".c"};
  return isHeader(path) || kSources.contains(path.extension().string());
}

struct Include {
  bool quoted;
  std::string path;
};

std::optional<Include> includeOf(const std::string& line) {
  static const std::regex kInclude(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"].*)");
  std::smatch match;
  if (!std::regex_match(line, match, kInclude)) {
    return std::nullopt;
  }
  return Include{match[1] == "\"", match[2]};
}

bool isLibraryHeader(const std::string& path) {
  static const std::regex kLibraries(
      R"((glib|gio|gobject|gmodule|gtk|gdk|gsk|graphene|adwaita|pango|curl|plist|jansson)([-./].*|\d.*))");
  return std::regex_match(path, kLibraries);
}

bool mayShowLibraryHeader(const std::string& room) {
  return room == kRealDesktop || room == "alert" || kFreeFolders.contains(room);
}

bool mayInclude(const std::string& file, const std::string& room, const std::string& other) {
  if (room == other || kFreeFolders.contains(room)) {
    return true;
  }
  return kRooms.at(room).contains(other) || (file == "app/main.cpp" && other == kRealDesktop);
}

/// What is wrong with an include of `file`, which lies in `room`; nothing when it is in order.
std::optional<std::string> faultOf(const Include& include, const std::string& file,
                                   const std::string& room) {
  if (isLibraryHeader(include.path)) {
    const bool hidden = !isHeader(file) || mayShowLibraryHeader(room);
    return hidden ? std::nullopt
                  : std::optional("a header shows the library header " + include.path);
  }
  const std::optional<std::string> other = roomOf(include.path);
  if (other && !mayInclude(file, room, *other)) {
    return room + "/ may not include " + include.path;
  }
  const bool relative =
      include.path.starts_with('.') ||
      (!other && include.quoted && !kFreeFolders.contains(room) &&
       fs::path(include.path).has_extension() &&
       fs::exists(fs::path(VENDRIL_SOURCE_DIR) / fs::path(file).parent_path() / include.path));
  return relative ? std::optional(include.path + " is not written from the root") : std::nullopt;
}

std::string located(const SourceFile& file, std::size_t line, const std::string& fault) {
  return file.path + ":" + std::to_string(line) + ": " + fault;
}

std::vector<std::string> readLines(const fs::path& path) {
  std::ifstream stream(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

template <class Predicate>
std::vector<SourceFile> filesBelow(const std::string& root, const Names& folders,
                                   const Predicate& wanted) {
  std::vector<SourceFile> files;
  for (const std::string& folder : folders) {
    if (!fs::exists(fs::path(root) / folder)) {
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(root) / folder)) {
      if (entry.is_regular_file() && wanted(entry.path())) {
        files.push_back(
            {fs::relative(entry.path(), root).generic_string(), readLines(entry.path())});
      }
    }
  }
  return files;
}

/// The folders that hold C++ files.
Names cxxFolders() {
  Names folders = kFreeFolders;
  for (const auto& [room, allowed] : kRooms) {
    folders.insert(room.substr(0, room.find('/')));
  }
  return folders;
}

}  // namespace

std::vector<SourceFile> roomFiles(const std::string& root) {
  return filesBelow(root, cxxFolders(), isCxxFile);
}

std::vector<SourceFile> handWrittenFiles(const std::string& root) {
  Names folders = cxxFolders();
  folders.insert({"cmake", "data", "scripts"});
  const Names kBinary{".png", ".gz", ".mo"};
  return filesBelow(root, folders, [&kBinary](const fs::path& path) {
    return !kBinary.contains(path.extension().string());
  });
}

std::vector<std::string> includeViolations(const SourceFile& file) {
  std::vector<std::string> violations;
  const std::optional<std::string> room = roomOf(file.path);
  if (!room) {
    return {file.path + ":1: lies in no room"};
  }
  for (std::size_t index = 0; index < file.lines.size(); ++index) {
    const std::optional<Include> include = includeOf(file.lines[index]);
    const auto fault = include ? faultOf(*include, file.path, *room) : std::nullopt;
    if (fault) {
      violations.push_back(located(file, index + 1, *fault));
    }
  }
  return violations;
}

std::vector<std::string> lengthViolations(const SourceFile& file) {
  const std::size_t longest = isHeader(file.path) ? kLongestHeader : kLongestSource;
  if (file.lines.size() <= longest) {
    return {};
  }
  return {located(file, longest + 1, "goes on after " + std::to_string(longest) + " lines")};
}

std::vector<std::string> leftoverViolations(const SourceFile& file) {
  // Put together here, so that this file holds neither word.
  static const std::regex kLeftover(std::string(R"(\b(TO)") + "DO|FIX" + R"(ME)\b)");
  std::vector<std::string> violations;
  for (std::size_t index = 0; index < file.lines.size(); ++index) {
    if (std::regex_search(file.lines[index], kLeftover)) {
      violations.push_back(located(file, index + 1, "leaves work undone"));
    }
  }
  return violations;
}

}  // namespace vendril
