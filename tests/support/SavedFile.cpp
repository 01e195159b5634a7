#include "support/SavedFile.h"

#include "config/ZQN5PublishedConfiguration.h"

namespace vendril {
namespace {

constexpr const char* kScheme = "vendril";
/// More than one block of any file system, so that a file can be torn.
constexpr std::size_t kBulk = 20'000;

std::filesystem::path pathOf(SavedFile::Kind kind, const PrivateHome& home) {
  switch (kind) {
    case SavedFile::Kind::configuration:
      return home.config() / "brelto/Preferences/group.com.brelto.orvanta.plist";
    case SavedFile::Kind::userDefaults:
      return home.config() / "brelto/Preferences/com.brelto.vendril.plist";
    case SavedFile::Kind::autostartEntry:
      return home.config() / "autostart/com.brelto.vendril.desktop";
    case SavedFile::Kind::mimeAppsList:
      break;
  }
  return home.config() / "mimeapps.list";
}

}  // namespace

SavedFile::SavedFile(Kind kind, const PrivateHome& home, RealHost& host)
    : kind_(kind), home_(home), host_(host), path_(pathOf(kind, home)) {}

void SavedFile::prepare() {
  const std::string bulk = "# " + std::string(kBulk, 'x') + "\n";
  if (kind_ == Kind::mimeAppsList) {
    files_.application("version0", "MimeType=x-scheme-handler/vendril;\n");
    files_.application("version1", "MimeType=x-scheme-handler/vendril;\n");
    files_.mimeApps(bulk);
    save(1);
  } else if (kind_ == Kind::autostartEntry) {
    files_.autostart(path_.filename(), desktopEntryText("Vendril", "/gone/vendril", bulk));
  }
  save(0);
}

bool SavedFile::save(int version) {
  const std::string name = "version" + std::to_string(version);
  switch (kind_) {
    case Kind::configuration:
      return saveConfiguration(name);
    case Kind::userDefaults:
      return saveUserDefaults(name);
    case Kind::autostartEntry:
      return saveAutostartEntry(name);
    case Kind::mimeAppsList:
      break;
  }
  return saveMimeAppsList(name);
}

std::vector<std::string> SavedFile::neighbours() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_.parent_path())) {
    const std::string name = entry.path().filename();
    if (entry.path() != path_) {
      names.push_back(name);
    }
  }
  return names;
}

bool SavedFile::saveConfiguration(const std::string& version) const {
  ZQN5PublishedConfiguration configuration{LoggerBlock()};
  configuration.setAppVersion(version);
  configuration.setSIPDomain(std::string(kBulk, 'x'));
  return configuration.saveToFile();
}

bool SavedFile::saveUserDefaults(const std::string& version) {
  host_.realUserDefaults.setObject("/" + version + std::string(kBulk, 'x'), "LogDirectory");
  return host_.realUserDefaults.synchronize();
}

// The program of the entry that stands there is gone, so the entry is healed.
bool SavedFile::saveAutostartEntry(const std::string& version) {
  host_.fakeBundle.path = "/gone/" + version;
  const Url program = Url::fileUrlWithPath(host_.fakeBundle.path);
  return host_.realSessionLoginItems.insertItemAtEnd(program, {}) != nullptr;
}

bool SavedFile::saveMimeAppsList(const std::string& version) {
  return host_.realLaunchServices.setDefaultHandlerForURLScheme(kScheme, version) ==
         LaunchServices::kSuccess;
}

std::string nameOf(SavedFile::Kind kind) {
  switch (kind) {
    case SavedFile::Kind::configuration:
      return "Configuration";
    case SavedFile::Kind::userDefaults:
      return "UserDefaults";
    case SavedFile::Kind::autostartEntry:
      return "AutostartEntry";
    case SavedFile::Kind::mimeAppsList:
      break;
  }
  return "MimeAppsList";
}

}  // namespace vendril
