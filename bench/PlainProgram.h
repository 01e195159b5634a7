#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vendril::bench {

// What a program would do that uses the libraries directly, and trusts what it reads.

/// A client's published configuration.
void writeConfiguration(const std::string& path);

/// The portal's address and the session in a link, found with libcurl.
std::optional<std::pair<std::string, std::string>> plainParse(const char* link);

struct PlainConfiguration {
  std::string appName;
  std::string appVersion;
  std::string sipDomain;
  std::string logDirectory;
  std::string executablePath;
  bool videoCapable = false;
  bool meetmeCapable = false;
  bool sipReady = false;
  bool isMeetMeOnly = false;
  bool isTemporary = false;
};

/// The published configuration, read with libplist.
std::optional<PlainConfiguration> plainLoad(const std::string& path);

/// The report of it, written with Jansson.
std::string plainReport(const std::string& path);

}  // namespace vendril::bench
