#include "platform/freedesktop/DesktopExec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/DesktopFiles.h"

namespace vendril {
namespace {

using testing::HasSubstr;

std::optional<std::string> programOf(const std::string& exec) {
  return programOfExec(exec).program;
}

TEST(DesktopExec, ProgramIsTheFirstArgument) {
  EXPECT_EQ(programOf("/usr/bin/foot --server"), "/usr/bin/foot");
  EXPECT_EQ(programOf("  foot"), "foot");
}

TEST(DesktopExec, QuotesAndTheirEscapesAreResolved) {
  EXPECT_EQ(programOf(R"("/opt/My App/run" --x)"), "/opt/My App/run");
  EXPECT_EQ(programOf(R"("/a\"b\`c\$d\\e")"), R"(/a"b`c$d\e)");
  EXPECT_EQ(programOf("'/opt/My App/run'"), "/opt/My App/run");
}

TEST(DesktopExec, FieldCodesCountAsNothing) {
  EXPECT_EQ(programOf("%i /usr/bin/foot %U"), "/usr/bin/foot");
  EXPECT_EQ(programOf("/opt/100%%/run"), "/opt/100%/run");
  EXPECT_EQ(programOf("/opt/run%"), "/opt/run");
}

TEST(DesktopExec, UnbalancedQuotesAndEmptinessNameNoProgram) {
  EXPECT_EQ(programOf("\"/opt/My App/run"), std::nullopt);
  EXPECT_THAT(programOfExec("\"/opt/My App/run").error, HasSubstr("\""));
  EXPECT_EQ(programOf(""), std::nullopt);
  EXPECT_EQ(programOf("%u"), std::nullopt);
}

TEST(DesktopExec, EnvIsSeenThroughWhenItOnlySetsVariables) {
  EXPECT_EQ(programOf("env A=1 B=2 /opt/run --x"), "/opt/run");
  EXPECT_EQ(programOf("/usr/bin/env run"), "run");
  EXPECT_EQ(programOf("env -u A /opt/run"), "env");
  EXPECT_EQ(programOf("env A=1"), "env");
  EXPECT_EQ(programOf("printenv A=1 run"), "printenv");
}

TEST(DesktopExec, WrittenExecNamesTheSameProgramWhateverItsPath) {
  for (const std::string path : {"/usr/bin/vendril", "/opt/My App/vendril", "/a\"b`c$d\\e",
                                 "/100%/%u/x", "/a b%u", "/semi;colon/#/it's", "/t\tab/new\nline",
                                 "/\xC3\xA4\xE2\x82\xAC/x", "/a=b/~/*?[x]&|<>()"}) {
    EXPECT_EQ(programOf(execForProgram(path)), path) << execForProgram(path);
  }
}

TEST(DesktopExec, PlainPathIsWrittenPlain) {
  EXPECT_EQ(execForProgram("/usr/bin/vendril-1.0_x"), "/usr/bin/vendril-1.0_x");
  EXPECT_EQ(execForProgram("/opt/My App/x"), "\"/opt/My App/x\"");
}

class FindExecutable : public testing::Test {
 protected:
  PrivateHome home_;
  DesktopFiles files_{home_};
};

TEST_F(FindExecutable, AbsolutePathHasToBeAnExecutableRegularFile) {
  const std::string program = files_.program("bin/run");
  EXPECT_EQ(findExecutable(program), program);
  EXPECT_EQ(findExecutable(home_.root() / "bin"), std::nullopt);
  EXPECT_EQ(findExecutable(home_.root() / "missing"), std::nullopt);
  std::filesystem::permissions(program, std::filesystem::perms::owner_read);
  EXPECT_EQ(findExecutable(program), std::nullopt);
}

TEST_F(FindExecutable, RelativePathLeadsNowhereThoughAProgramIsThere) {
  const std::string relative = std::filesystem::relative("/bin/sh");
  ASSERT_TRUE(std::filesystem::exists(relative)) << relative;
  EXPECT_EQ(findExecutable(relative), std::nullopt);
}

TEST_F(FindExecutable, NameIsFoundInTheFirstDirectoryOfPathThatHasIt) {
  files_.program("second/run");
  const std::string other = files_.program("second/other");
  const std::string first = files_.program("first/run");
  writeFile(home_.root() / "first/other", "not executable");
  const ScopedVariable path("PATH", "relative::" + (home_.root() / "first").string() +
                                        "/:" + (home_.root() / "second").string());
  EXPECT_EQ(findExecutable("run"), first);
  EXPECT_EQ(findExecutable("other"), other);
  EXPECT_EQ(findExecutable("missing"), std::nullopt);
  EXPECT_EQ(findExecutable("./run"), std::nullopt);
  EXPECT_EQ(findExecutable(""), std::nullopt);
}

}  // namespace
}  // namespace vendril
