#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/PropertyList.h"
#include "support/ChildProcess.h"
#include "support/DesktopFiles.h"
#include "support/LinkToReportFixture.h"

namespace vendril {

/// What a run of a program has come to.
struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};

/// The installed vendrilctl beside the installed agent, on a desktop where all is well: a client
/// has published its configuration and can be run.
class ToolFixture : public LinkToReportFixture {
 protected:
  using Words = std::vector<std::string>;
  using Object = PropertyList::Dictionary;

  ToolFixture();

  static std::string program() { return InstalledAgent::prefix() + "/bin/vendrilctl"; }

  /// Runs a program to its end.
  static ProgramRun runProgram(Words command, const ChildProcess::Environment& changes = {});
  /// Runs vendrilctl.
  static ProgramRun run(Words arguments, const ChildProcess::Environment& changes = {});
  /// Runs it with --json; its answer.
  static Object json(Words arguments, const ChildProcess::Environment& changes = {});

  /// One finding of `status`, by its name; empty when there is none of that name.
  static Object check(const std::string& name, const ChildProcess::Environment& changes = {});
  /// The verdicts of `status`, by name.
  static std::map<std::string, std::string> verdicts(const ChildProcess::Environment& changes = {});

  /// Asserts that `status` finds `verdict` at `level` for `name`, in JSON and in text.
  static void expectFinding(const std::string& name, const std::string& verdict,
                            const std::string& level,
                            const ChildProcess::Environment& changes = {});
  /// Runs the command that the finding says mends it, in a shell.
  static void mend(const std::string& name, const ChildProcess::Environment& changes = {});

  /// Everything below the private home: each path with its kind, permissions, time and contents.
  std::map<std::string, std::string> snapshot() const;

  // A test run by sudo, or without colours, is no other desktop.
  const ScopedVariable noSudo{"SUDO_USER", std::nullopt};
  const ScopedVariable anyColour{"NO_COLOR", std::nullopt};
  const DesktopFiles files{agent.home()};
  const std::string client = agent.home().root() / "orvanta";
  const std::filesystem::path associations = agent.home().config() / "mimeapps.list";
  const std::filesystem::path autostart = agent.home().config() / "autostart";
};

}  // namespace vendril
