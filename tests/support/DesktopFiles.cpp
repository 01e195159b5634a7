#include "support/DesktopFiles.h"

namespace vendril {
namespace {

using Path = DesktopFiles::Path;

Path write(const Path& path, std::string_view text) {
  writeFile(path, text);
  return path;
}

std::string applicationText(const std::string& id, std::string_view more) {
  return desktopEntryText(id, "/bin/true %u", more);
}

}  // namespace

std::string desktopEntryText(std::string_view name, std::string_view exec, std::string_view more) {
  std::string text = "[Desktop Entry]\nType=Application\n";
  text.append("Name=").append(name).append("\nExec=").append(exec).append("\n").append(more);
  return text;
}

Path DesktopFiles::program(const std::string& relativePath, std::string_view script) const {
  const Path path = write(home_.root() / relativePath, "#!/bin/sh\n" + std::string(script));
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

Path DesktopFiles::application(const std::string& id, std::string_view more) const {
  return write(home_.data() / "applications" / (id + ".desktop"), applicationText(id, more));
}

Path DesktopFiles::systemApplication(const std::string& id, std::string_view more) const {
  return write(home_.systemData() / "applications" / (id + ".desktop"), applicationText(id, more));
}

Path DesktopFiles::mimeApps(std::string_view text, const std::string& name) const {
  return write(home_.config() / name, text);
}

Path DesktopFiles::autostart(const std::string& name, std::string_view text) const {
  return write(home_.config() / "autostart" / name, text);
}

Path DesktopFiles::systemAutostart(const std::string& name, std::string_view text) const {
  return write(home_.systemConfig() / "autostart" / name, text);
}

}  // namespace vendril
