#pragma once

#include <string>
#include <vector>

namespace vendril::bench {

/// A program that is measured.
struct Side {
  std::string program;
  std::string busName;
};

/// The programs and how much they are put through.
struct Options {
  Side agent{"", "com.brelto.vendril"};
  Side floor{"", "com.brelto.vendril.Floor"};
  std::string script;
  /// Where the bus finds the services of agent and floor program.
  std::string serviceDirectory;
  /// Where the cost of the links goes, as comma-separated values; empty for nowhere.
  std::string costFile;
  int warmRounds = 500;
  int coldRounds = 25;
  int scriptRounds = 10;
  int idleSeconds = 60;
  int links = 100'000;
  /// The measurements to take; all of them when it is empty.
  std::vector<std::string> only;
};

}  // namespace vendril::bench
