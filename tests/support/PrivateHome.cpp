#include "support/PrivateHome.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace vendril {
namespace {

std::filesystem::path makeRoot() {
  std::string name = (std::filesystem::temp_directory_path() / "vendril-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  return name;
}

constexpr std::array kAbsentVariables{"DBUS_SESSION_BUS_ADDRESS", "DBUS_STARTER_ADDRESS",
                                      "DBUS_STARTER_BUS_TYPE",    "DISPLAY",
                                      "WAYLAND_DISPLAY",          "XDG_CURRENT_DESKTOP"};

}  // namespace

PrivateHome::PrivateHome() : root_(makeRoot()) {
  const auto provide = [this](const char* variable, const std::filesystem::path& directory) {
    std::filesystem::create_directories(directory);
    variables_.emplace_back(variable, directory.string());
  };
  provide("HOME", home());
  provide("XDG_CONFIG_HOME", config());
  provide("XDG_DATA_HOME", data());
  provide("XDG_CACHE_HOME", cache());
  provide("XDG_STATE_HOME", state());
  provide("XDG_RUNTIME_DIR", runtime());
  provide("XDG_CONFIG_DIRS", systemConfig());
  provide("XDG_DATA_DIRS", systemData());
  std::filesystem::permissions(runtime(), std::filesystem::perms::owner_all);
  for (const char* variable : kAbsentVariables) {
    variables_.emplace_back(variable, std::nullopt);
  }
}

PrivateHome::~PrivateHome() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

void writeFile(const std::filesystem::path& path, std::string_view contents) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << contents;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace vendril
