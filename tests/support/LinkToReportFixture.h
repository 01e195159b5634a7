#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/InstalledAgent.h"
#include "support/TestPortal.h"

namespace vendril {

/// The installed agent with a published configuration, and a portal.
class LinkToReportFixture : public ::testing::Test {
 protected:
  LinkToReportFixture() { agent.publishSampleConfiguration(); }

  std::string link(const std::string& sessionId) const {
    return linkTo(portal.url("/report"), sessionId);
  }

  /// The session identifiers that have arrived.
  std::multiset<std::string> arrivedSessions() const {
    std::multiset<std::string> sessions;
    for (const TestPortal::Request& request : portal.requests()) {
      const auto field = request.formFields.find("session_id");
      sessions.insert(field != request.formFields.end() ? field->second : "none");
    }
    return sessions;
  }

  TestPortal portal;
  InstalledAgent agent;
};

}  // namespace vendril
