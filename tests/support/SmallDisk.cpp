#include "support/SmallDisk.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

#include "support/UniqueFd.h"

namespace vendril {
namespace {

constexpr const char* kSize = "size=256k,nr_inodes=64";

void check(bool good, const char* what) {
  if (!good) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

UniqueFd newFile(const std::filesystem::path& path) {
  return UniqueFd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
}

}  // namespace

SmallDisk::SmallDisk(const std::filesystem::path& mountPoint) : mountPoint_(mountPoint) {
  check(::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, kSize) == 0, "mount");
}

void SmallDisk::fill() const {
  const UniqueFd file = newFile(mountPoint_ / "filler");
  const std::array<char, 4096> page{};
  while (::write(file.get(), page.data(), page.size()) > 0) {
  }
  check(errno == ENOSPC, "fill");
  // What the disk calls full may still have room for less than a page.
  while (::write(file.get(), page.data(), 1) > 0) {
  }
}

void SmallDisk::useUpFiles() const {
  for (int number = 0; newFile(mountPoint_ / ("filler" + std::to_string(number))); ++number) {
  }
  check(errno == ENOSPC, "use up files");
}

void SmallDisk::makeReadOnly() const {
  check(::mount(nullptr, mountPoint_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0,
        "remount");
}

}  // namespace vendril
