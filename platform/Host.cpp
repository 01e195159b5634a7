#include "platform/Host.h"

#include <cstdlib>

namespace vendril {
namespace {

Host* installedHost = nullptr;

}  // namespace

void Host::install(Host* host) {
  installedHost = host;
}

Host& Host::current() {
  if (installedHost == nullptr) {
    std::abort();
  }
  return *installedHost;
}

}  // namespace vendril
