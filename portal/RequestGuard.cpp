#include "portal/RequestGuard.h"

namespace vendril::portal {
namespace {

std::string withPort(std::string host, int port) {
  return host.append(":").append(std::to_string(port));
}

bool isOurs(const std::string& host, int port) {
  return host == withPort("127.0.0.1", port) || host == withPort("localhost", port);
}

bool isFromAnotherSite(const Provenance& provenance) {
  if (provenance.origin) {
    return *provenance.origin != "http://" + provenance.host;
  }
  // Following a link from another site to this page is no harm.
  const bool isNavigation = provenance.fetchMode == "navigate";
  return !isNavigation &&
         (provenance.fetchSite == "cross-site" || provenance.fetchSite == "same-site");
}

}  // namespace

std::optional<std::string> refusalOf(const Provenance& provenance, int port) {
  if (!isOurs(provenance.host, port)) {
    return "this portal answers under 127.0.0.1 and localhost only\n";
  }
  if (isFromAnotherSite(provenance)) {
    return "this portal takes no requests from pages of other sites\n";
  }
  return std::nullopt;
}

}  // namespace vendril::portal
