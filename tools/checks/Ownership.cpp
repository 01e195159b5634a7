#include "tools/checks/Ownership.h"

#include <sys/stat.h>
#include <unistd.h>

namespace vendril::tools {

bool isOwn(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
}

}  // namespace vendril::tools
