#include "support/AgentTest.h"

#include <signal.h>

#include <algorithm>
#include <sstream>

#include "support/MainLoop.h"

namespace vendril {
namespace {

constexpr std::string_view kLinkPrefix = "link ";

}  // namespace

AgentTest::AgentTest()
    : recordVariable_("TEST_AGENT_RECORD", (home_.root() / "record").string()),
      bus_(home_),
      client_(bus_.address()) {}

AgentTest::Process AgentTest::start(const Lines& arguments,
                                    const ChildProcess::Environment& changes) {
  Lines command{kProgram};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return std::make_unique<ChildProcess>(std::move(command), changes);
}

AgentTest::Process AgentTest::startFirst(const Lines& arguments) {
  Process process = start(arguments);
  EXPECT_TRUE(waitForRecord("did"));
  return process;
}

std::optional<int> AgentTest::quit(ChildProcess& process) {
  process.signal(SIGTERM);
  return process.waitForExit();
}

AgentTest::Lines AgentTest::record() const {
  std::istringstream text(readFile(home_.root() / "record"));
  Lines lines;
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  return lines;
}

AgentTest::Lines AgentTest::handledLinks() const {
  Lines links;
  for (const std::string& line : record()) {
    if (line.starts_with(kLinkPrefix)) {
      links.push_back(line.substr(kLinkPrefix.size()));
    }
  }
  return links;
}

bool AgentTest::waitForRecord(const std::string& line) const {
  return runMainLoopUntil([&] {
    const Lines lines = record();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  });
}

void AgentTest::clearRecord() const {
  std::filesystem::remove(home_.root() / "record");
}

}  // namespace vendril
