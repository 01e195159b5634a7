#pragma once

namespace vendril {

/// While one lives, `fdopen` accepts a descriptor that is open for reading only and gives a stream
/// that writes to the end of its file, as C libraries do that do not compare the stream's mode with
/// the descriptor's. Works in a program that is linked with --wrap=fdopen.
class AcceptingFdopen {
 public:
  AcceptingFdopen();
  AcceptingFdopen(const AcceptingFdopen&) = delete;
  AcceptingFdopen& operator=(const AcceptingFdopen&) = delete;
  ~AcceptingFdopen();
};

}  // namespace vendril
