#pragma once

#include <optional>
#include <string>

#include "platform/freedesktop/GlibPtr.h"

namespace vendril {

/// What a `.desktop` file says, as it was when it was read: of the standard's keys the type, the
/// name, the programs, the types of files and whether it is hidden; and all keys beyond the
/// standard, which begin with "X-".
class DesktopEntry {
 public:
  /// Reads the file at `path`; nothing when `readText` gives nothing or its text does not parse.
  static std::optional<DesktopEntry> read(const std::string& path);
  /// The text of the file at `path`; nothing when it cannot be read, is not a regular file, or is
  /// over 1 MiB.
  static std::optional<std::string> readText(const std::string& path);
  /// Understands what a file holds; nothing when it does not parse or does not begin with the
  /// group "Desktop Entry".
  static std::optional<DesktopEntry> parse(const std::string& bytes);

  bool isApplication() const { return string("Type") == "Application"; }
  /// True when the entry is to be treated as if it did not exist.
  bool isHidden() const { return boolean("Hidden"); }

  /// The name in the user's language. One in another encoding than UTF-8 is given with a
  /// replacement character for each byte that is none.
  std::optional<std::string> name() const;

  /// The value of a key, its escapes resolved; nothing when it is missing, has a malformed escape
  /// or is not UTF-8.
  std::optional<std::string> string(const char* key) const;
  /// False when the key is missing or holds something else than a boolean.
  bool boolean(const char* key) const;

  /// Finds the program that the entry starts.
  struct Program {
    /// Its absolute path; nothing when it does not exist or when the program that `TryExec` names
    /// does not.
    std::optional<std::string> path;
    /// Why there is no path.
    std::string error;
  };
  Program program() const;

  /// True for an application whose programs, as far as the entry names any, exist: what GIO takes
  /// for an application that is installed.
  bool isInstalledApplication() const;

 private:
  explicit DesktopEntry(GKeyFilePtr file) : file_(std::move(file)) {}

  /// Asked before each value: GKeyFile composes a translated error for one that is missing.
  bool has(const char* key) const;
  /// The program that `TryExec` names, if it names one, and where it was found; else an error.
  struct Trial {
    std::optional<std::string> program;
    std::optional<std::string> path;
    std::optional<std::string> error;
  };
  Trial tryExec() const;

  GKeyFilePtr file_;
};

}  // namespace vendril
