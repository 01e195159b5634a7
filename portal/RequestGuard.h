#pragma once

#include <optional>
#include <string>

namespace vendril::portal {

/// What a request says about where it comes from: the values of its headers, empty when absent.
struct Provenance {
  /// "Host": the name under which the client knows the portal.
  std::string host;
  /// "Origin": the site whose page sends the request.
  std::optional<std::string> origin;
  /// "Sec-Fetch-Site" and "Sec-Fetch-Mode", as browsers send them.
  std::string fetchSite;
  std::string fetchMode;
};

/// Why a portal on `port` refuses a request; nothing when it does not. A browser on this computer
/// may show pages of any site. Their scripts must neither read the reports, under a name of their
/// own that they have pointed at this computer, nor send any. Programs send no origin and pass.
std::optional<std::string> refusalOf(const Provenance& provenance, int port);

}  // namespace vendril::portal
