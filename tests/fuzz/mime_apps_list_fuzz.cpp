// The user's list of default applications: what is read out of it, and how it is edited.

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzTarget.h"
#include "fuzz/KeyFiles.h"
#include "platform/freedesktop/GioLaunchServices.h"
#include "platform/freedesktop/MimeAppsList.h"
#include "support/TemporaryDirectory.h"

namespace vendril::fuzz {
namespace {

constexpr const char* kOurs = "com.brelto.vendril";
constexpr const char* kOurFile = "com.brelto.vendril.desktop";
constexpr const char* kType = "x-scheme-handler/vendril";

using Ids = std::vector<std::string>;

/// The directories of a user with our application installed.
struct Desktop {
  Desktop() {
    std::filesystem::create_directories(directory / "data/applications");
    std::filesystem::create_directories(directory / "config");
    directory.write(std::string("data/applications/") + kOurFile,
                    "[Desktop Entry]\nType=Application\nName=Vendril\nExec=/bin/true\n");
  }

  XdgPaths paths() const {
    return {.configHome = directory / "config",
            .configDirs = {},
            .dataHome = directory / "data",
            .dataDirs = {},
            .currentDesktops = {}};
  }

  TemporaryDirectory directory;
};

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r\n\f");
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(" \t\r\n\f") + 1 - begin);
}

/// The lines of a text without their ends, but for blank ones and those that may be about our type.
std::vector<std::string_view> foreignLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const bool hasEnd = line.size() < text.size();
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const std::string_view content =
        hasEnd && line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
    if (!trimmed(line).empty() && trimmed(line.substr(0, line.find('='))) != kType) {
      lines.push_back(content);
    }
  }
  return lines;
}

/// True when `part` is left over after some elements of `whole` are taken out.
bool isSubsequence(const std::vector<std::string_view>& part,
                   const std::vector<std::string_view>& whole) {
  auto next = part.begin();
  for (const std::string_view line : whole) {
    if (next != part.end() && *next == line) {
      ++next;
    }
  }
  return next == part.end();
}

Ids without(Ids ids, const std::string& id) {
  std::erase(ids, id);
  return ids;
}

std::string edited(const std::string& text) {
  std::string result =
      withApplicationFirst(text, MimeAppsList::kDefaultApplications, kType, kOurFile);
  result = withApplicationFirst(result, MimeAppsList::kAddedAssociations, kType, kOurFile);
  return withoutApplication(result, MimeAppsList::kRemovedAssociations, kType, kOurFile);
}

void checkEdit(const MimeAppsList& list) {
  const std::string text = edited(list.text());
  const auto after = MimeAppsList::parse(text);
  require(after.has_value(), "An edited list parses");
  require(edited(text) == text, "A list that has been edited needs no edit");
  require(isSubsequence(foreignLines(list.text()), foreignLines(text)),
          "An edited list keeps the lines of others as they are");
  requireSameValues(list.text(), text, [](auto /*group*/, auto key) { return key == kType; });
  for (const char* group : {MimeAppsList::kDefaultApplications, MimeAppsList::kAddedAssociations}) {
    const Ids expected = without(without(list.applications(group, kType), kOurFile), "");
    Ids ids = without(after->applications(group, kType), "");
    require(!ids.empty() && ids.front() == kOurFile, "Our application comes first");
    ids.erase(ids.begin());
    // A value that was unreadable gave none, and gives those that are readable now.
    require(expected.empty() || without(ids, kOurFile) == expected,
            "Other applications stay behind ours");
  }
  const Ids removed = after->applications(MimeAppsList::kRemovedAssociations, kType);
  require(without(removed, kOurFile) == removed, "Our application is not removed");
}

/// The same with the file, through the service.
void checkService(const std::string& text, bool parses) {
  static const Desktop kDesktop;
  const TemporaryDirectory& directory = kDesktop.directory;
  directory.write("config/mimeapps.list", text);
  GioLaunchServices services(kDesktop.paths());
  const bool done = services.setDefaultHandlerForURLScheme("vendril", kOurs) == 0;
  require(done == parses, "A list can be edited when it parses");
  require(directory.read("config/mimeapps.list") == (done ? edited(text) : text),
          "A list is replaced by its edited text, or left as it is");
  require(!done || services.copyDefaultHandlerForURLScheme("vendril") == kOurs,
          "The list makes our application the default one");
}

}  // namespace

void check(std::string_view input) {
  const std::string text(input);
  const auto list = MimeAppsList::parse(text);
  if (list) {
    checkEdit(*list);
  }
  checkService(text, list.has_value());
}

}  // namespace vendril::fuzz
