#pragma once

#include <sys/types.h>
#include <unistd.h>

#include "platform/UserDirectories.h"

namespace vendril {

/// The user's Library is the application family's folder among the user's configuration files:
/// `brelto` below $XDG_CONFIG_HOME, else below `.config` in $HOME, else in the home directory that
/// the user database names. A variable that is empty or not an absolute path counts as unset. The
/// environment is read on each call.
class XdgUserDirectories : public UserDirectories {
 public:
  /// `user` is whom the user database is asked about.
  explicit XdgUserDirectories(uid_t user = getuid()) : user_(user) {}

  std::vector<std::string> libraryDirectories() const override;

 private:
  uid_t user_;
};

}  // namespace vendril
