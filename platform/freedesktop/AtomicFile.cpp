#include "platform/freedesktop/AtomicFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "platform/freedesktop/FileDescriptor.h"

namespace vendril {
namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

/// The directory that `path` lies in, with a slash at the end.
std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// Follows the symbolic link at `path`, if there is one, by one step.
std::optional<std::string> linkTarget(const std::string& path) {
  std::array<char, PATH_MAX> buffer{};
  const ssize_t length = readlink(path.c_str(), buffer.data(), buffer.size());
  if (length <= 0) {
    return std::nullopt;
  }
  const std::string target(buffer.data(), static_cast<std::size_t>(length));
  return target.front() == '/' ? target : directoryOf(path) + target;
}

/// Follows symbolic links to the file that they mean in the end, which need not exist.
std::error_code followLinks(std::string& path) {
  constexpr int kMostLinks = 40;  // as many as Linux itself follows in one path
  for (int links = 0; links <= kMostLinks; ++links) {
    const std::optional<std::string> target = linkTarget(path);
    if (!target) {
      return {};
    }
    path = *target;
  }
  return std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

/// The permission bits of the file that is to be replaced; nothing when there is none.
std::error_code findOldMode(const std::string& path, std::optional<mode_t>& mode) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? std::error_code() : lastError();
  }
  if (!S_ISREG(status.st_mode)) {
    return std::make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                        : std::errc::operation_not_supported);
  }
  mode = status.st_mode & ACCESSPERMS;
  return {};
}

/// A new file beside the one that it is to replace; it goes away unless it takes that one's place.
class TemporaryFile {
 public:
  TemporaryFile(const std::string& target, mode_t mode)
      : target_(target),
        path_(fmt::format("{}.vendril-{:016x}.tmp", directoryOf(target), randomNumber())),
        file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode)),
        exists_(static_cast<bool>(file_)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (exists_) {
      unlink(path_.c_str());
    }
  }

  explicit operator bool() const { return exists_; }

  bool setMode(mode_t mode) { return fchmod(file_.get(), mode) == 0; }

  bool write(std::string_view contents) {
    while (!contents.empty()) {
      const ssize_t count = ::write(file_.get(), contents.data(), contents.size());
      if (count < 0 && errno != EINTR) {
        return false;
      }
      contents.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return true;
  }

  /// Puts the file, safely on the disk, in the place of the target.
  bool takePlace() {
    if (fsync(file_.get()) != 0 || !file_.close() || rename(path_.c_str(), target_.c_str()) != 0) {
      return false;
    }
    exists_ = false;
    return true;
  }

 private:
  static std::uint64_t randomNumber() {
    std::uint64_t number = 0;
    arc4random_buf(&number, sizeof number);
    return number;
  }

  const std::string& target_;
  std::string path_;
  FileDescriptor file_;
  bool exists_;
};

}  // namespace

std::error_code replaceFile(const std::string& path, std::string_view contents) {
  std::string target = path;
  std::optional<mode_t> oldMode;
  if (const std::error_code error = followLinks(target)) {
    return error;
  }
  if (const std::error_code error = findOldMode(target, oldMode)) {
    return error;
  }
  constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
  constexpr mode_t kAsUmaskAllows = DEFFILEMODE;
  TemporaryFile file(target, oldMode ? kPrivate : kAsUmaskAllows);
  const bool replaced =
      file && (!oldMode || file.setMode(*oldMode)) && file.write(contents) && file.takePlace();
  return replaced ? std::error_code() : lastError();
}

}  // namespace vendril
