#include "support/ToolFixture.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "support/JsonText.h"

namespace vendril {
namespace {

namespace fs = std::filesystem;

std::string stateOf(const fs::directory_entry& entry) {
  const fs::file_status status = entry.symlink_status();
  std::string state = std::to_string(static_cast<int>(status.type())) + " " +
                      std::to_string(static_cast<unsigned>(status.permissions()));
  if (fs::is_regular_file(status)) {
    state += " " + std::to_string(entry.last_write_time().time_since_epoch().count()) + " " +
             readFile(entry.path());
  }
  return state;
}

}  // namespace

ToolFixture::ToolFixture() {
  fs::permissions(client, fs::perms::owner_all);
}

ProgramRun ToolFixture::runProgram(Words command, const ChildProcess::Environment& changes) {
  ChildProcess process(std::move(command), changes);
  const int status = process.waitForExit().value_or(-1);
  return {status, process.out(), process.err()};
}

ProgramRun ToolFixture::run(Words arguments, const ChildProcess::Environment& changes) {
  arguments.insert(arguments.begin(), program());
  return runProgram(std::move(arguments), changes);
}

ToolFixture::Object ToolFixture::json(Words arguments, const ChildProcess::Environment& changes) {
  arguments.emplace_back("--json");
  const ProgramRun answer = run(std::move(arguments), changes);
  EXPECT_THAT(answer.out, testing::StartsWith("{"))
      << "it ended with " << answer.status << " and this on standard error: " << answer.err;
  return parseJsonObject(answer.out);
}

ToolFixture::Object ToolFixture::check(const std::string& name,
                                       const ChildProcess::Environment& changes) {
  const Object answer = json({"status"}, changes);
  for (const PropertyList& element : *answer.at("checks").get<PropertyList::Array>()) {
    const Object& object = *element.get<Object>();
    if (textAt(object, "check") == name) {
      return object;
    }
  }
  return {};
}

std::map<std::string, std::string> ToolFixture::verdicts(const ChildProcess::Environment& changes) {
  std::map<std::string, std::string> result;
  const Object answer = json({"status"}, changes);
  for (const PropertyList& element : *answer.at("checks").get<PropertyList::Array>()) {
    const Object& object = *element.get<Object>();
    result.emplace(textAt(object, "check"), textAt(object, "verdict"));
  }
  return result;
}

void ToolFixture::expectFinding(const std::string& name, const std::string& verdict,
                                const std::string& level,
                                const ChildProcess::Environment& changes) {
  const Object found = check(name, changes);
  EXPECT_EQ(textAt(found, "verdict"), verdict) << description(found);
  EXPECT_EQ(textAt(found, "level"), level) << description(found);
  const ProgramRun text = run({"status"}, changes);
  std::string line = level;
  line.append(" ").append(name).append(" ").append(verdict).append(": ");
  EXPECT_THAT(text.out, testing::HasSubstr(line));
  EXPECT_EQ(text.status, text.out.find("\nerror ") != std::string::npos ? 1 : 0) << text.out;
  if (found.contains("remedy")) {
    EXPECT_THAT(text.out, testing::HasSubstr("  mend: " + textAt(found, "remedy") + "\n"));
  }
}

void ToolFixture::mend(const std::string& name, const ChildProcess::Environment& changes) {
  const std::string remedy = textAt(check(name, changes), "remedy");
  const ProgramRun shell = runProgram({"bash", "-c", remedy}, changes);
  EXPECT_EQ(shell.status, 0) << remedy << "\n" << shell.out << shell.err;
}

std::map<std::string, std::string> ToolFixture::snapshot() const {
  std::map<std::string, std::string> result;
  for (const auto& entry : fs::recursive_directory_iterator(agent.home().home())) {
    result.emplace(entry.path(), stateOf(entry));
  }
  return result;
}

}  // namespace vendril
