#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace vendril {

/// The bounds within which requests are sent.
struct CurlLimits {
  /// Sockets open at once. With a name lookup of two more descriptors each, they stay below the
  /// customary limit of 1024 descriptors for a process.
  std::size_t maxSockets = 256;
  /// Sockets open at once to one scheme, host and port.
  std::size_t maxSocketsPerOrigin = 64;
  /// A longer response body, in bytes, ends the transfer.
  std::size_t maxBodySize = std::size_t{1024} * 1024;
  /// Longer response headers, in bytes, end the transfer.
  std::size_t maxHeaderSize = std::size_t{256} * 1024;
  /// How long the requests that are under way may go on when the connection is destroyed.
  std::chrono::milliseconds drainTime{3000};
  /// How long a request waits to learn its proxy before it goes without one.
  std::chrono::milliseconds proxyLookupTime{10000};
  /// For tests: no transfer takes longer than this, whatever its request says.
  std::optional<std::chrono::milliseconds> timeoutCap{};
  /// For tests: the certificates to trust instead of the system's.
  std::optional<std::string> certificateAuthorityFile{};
};

}  // namespace vendril
