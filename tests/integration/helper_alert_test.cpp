// How a run of an alert goes on when its helper is not what it should be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "support/AlertFixture.h"
#include "support/ChildProcess.h"

namespace vendril {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class HelperAlertRun : public AlertFixture {
 protected:
  std::string contentsOf(const std::string& name) const {
    std::ifstream file(home() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// Of as many helpers as the file "processes" names, not even a zombie is left.
  void expectProcessesGone(int number) const {
    std::ifstream file(home() / "processes");
    int process = 0;
    int count = 0;
    while (file >> process) {
      ++count;
      EXPECT_EQ(kill(process, 0), -1) << process;
      EXPECT_EQ(errno, ESRCH);
    }
    EXPECT_EQ(count, number);
  }
  long run(const std::string& script) { return makeAlert(makeHelper(script))->runModal(); }
};

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(HelperAlertRun, TheAnswerOfTheHelperIsTheResult) {
  EXPECT_EQ(run("echo 1000"), 1000);
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(HelperAlertRun, NoDisplayIsAnotherResult) {
  EXPECT_EQ(makeAlert(kRealHelper)->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre("The alert ended without an answer: the helper ended with status "
                                 "3: no display can be opened"));
}

TEST_F(HelperAlertRun, AMissingHelperIsAnotherResult) {
  EXPECT_EQ(makeAlert((home() / "absent").string())->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(HasSubstr("No such file or directory")));
}

TEST_F(HelperAlertRun, AHelperThatIsNoProgramIsAnotherResult) {
  EXPECT_EQ(makeAlert(home().string())->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(HasSubstr("Permission denied")));
}

TEST_F(HelperAlertRun, AHelperThatIsKilledIsAnotherResult) {
  EXPECT_EQ(run("kill -SEGV $$"), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(EndsWith("the helper was ended by signal 11")));
}

TEST_F(HelperAlertRun, AnUnknownAnswerIsAnotherResult) {
  for (const char* script : {"echo 1001", "echo ' 1000'", "echo 10000", "printf 1000",
                             "echo 1000; echo 1000", "head -c 100000 /dev/zero; echo 1000", ":"}) {
    EXPECT_EQ(run(script), Alert::kAbortReturn) << script;
    ASSERT_FALSE(log().empty()) << script;
    EXPECT_THAT(log().back(), EndsWith("the helper's answer is none that is known")) << script;
  }
  EXPECT_EQ(log().size(), 7U);
}

TEST_F(HelperAlertRun, AnAnswerOfAFailedHelperDoesNotCount) {
  EXPECT_EQ(run("echo 1000; exit 1"), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(EndsWith("the helper ended with status 1")));
}

TEST_F(HelperAlertRun, TheLogQuotesTheLastLineOfTheErrorOutput) {
  EXPECT_EQ(run("echo first >&2; echo 'the last' >&2; exit 7"), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(EndsWith("the helper ended with status 7: the last")));
}

TEST_F(HelperAlertRun, AFloodOfOutputNeitherBlocksNorGrows) {
  EXPECT_EQ(run("head -c 3000000 /dev/zero | tr '\\0' x >&2; echo >&2; echo end >&2; exit 7"),
            Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(EndsWith("the helper ended with status 7: end")));
  EXPECT_EQ(run("head -c 3000000 /dev/zero | tr '\\0' x >&2; exit 7"), Alert::kAbortReturn);
  EXPECT_LT(log().back().size(), 5000U);
}

TEST_F(HelperAlertRun, AProgramThatTheHelperLeftBehindIsNotWaitedFor) {
  EXPECT_EQ(run("sleep 1000 & echo $! >\"$HOME/left\"; echo 1000"), 1000);
  EXPECT_EQ(kill(std::stoi(contentsOf("left")), SIGKILL), 0);
}

TEST_F(HelperAlertRun, TextsReachTheHelperByteForByte) {
  const std::unique_ptr<HelperAlert> alert =
      makeAlert(makeHelper("printf '[%s]' \"$@\" >\"$HOME/arguments\"; echo 1000"));
  alert->setAlertStyle(Alert::Style::critical);
  alert->setMessageText("$(touch \"$HOME/touched\"); `id` \\ '\"\n--help");
  alert->setInformativeText("\xff%s<b>&amp;");
  alert->addButtonWithTitle("");
  EXPECT_EQ(alert->runModal(), 1000);
  EXPECT_EQ(contentsOf("arguments"),
            "[critical][$(touch \"$HOME/touched\"); `id` \\ '\"\n--help][\xff%s<b>&amp;][]");
  EXPECT_FALSE(std::filesystem::exists(home() / "touched"));
}

TEST_F(HelperAlertRun, AnAlertWithoutTextsHasAWarningStyleAndAnOkButton) {
  EXPECT_EQ(run("printf '[%s]' \"$@\" >\"$HOME/arguments\"; echo 1000"), 1000);
  EXPECT_EQ(contentsOf("arguments"), "[warning][][][OK]");
}

TEST_F(HelperAlertRun, ATextThatIsTooLongForTheSystemIsAnotherResult) {
  const std::unique_ptr<HelperAlert> alert = makeAlert(makeHelper("echo 1000"));
  alert->setMessageText(std::string(10000000, 'x'));
  EXPECT_EQ(alert->runModal(), Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(HasSubstr("Argument list too long")));
}

TEST_F(HelperAlertRun, TheHelperGetsTheEnvironmentAndNoDescriptor) {
  const std::ifstream openInThisProcess("/dev/null");
  setEnvironment("VENDRIL_TEST_VARIABLE", "passes");
  EXPECT_EQ(run("cd /proc/$$/fd; for n in *; do readlink $n; done >\"$HOME/descriptors\";"
                "echo \"$VENDRIL_TEST_VARIABLE\" >\"$HOME/variable\"; echo 1000"),
            1000);
  EXPECT_EQ(contentsOf("variable"), "passes\n");
  EXPECT_THAT(contentsOf("descriptors"),
              ::testing::MatchesRegex("(pipe:[^\n]*\n|[^\n]*/descriptors\n|[^\n]*/helper\n)*"));
}

TEST_F(HelperAlertRun, LeavesNoDescriptorAndNoZombieBehind) {
  run("echo 1000");
  const std::ptrdiff_t afterOneRun = openDescriptors();
  for (int round = 0; round < 10; ++round) {
    for (const char* script : {"echo 1000", "exit 3", "kill -KILL $$"}) {
      run(std::string("echo $$ >>\"$HOME/processes\";") + script);
    }
    makeAlert("/nonexistent/helper")->runModal();
  }
  // GLib's own thread gives the last run's descriptors back a moment later.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (openDescriptors() > afterOneRun && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_LE(openDescriptors(), afterOneRun);
  expectProcessesGone(30);
}

TEST_F(HelperAlertRun, TheMainLoopGoesOnMeanwhile) {
  int calls = 0;
  pollInMainLoop([this, &calls] {
    if (++calls == 3) {
      std::ofstream(home() / "answered");
    }
    return calls == 3;
  });
  EXPECT_EQ(run("until [ -e \"$HOME/answered\" ]; do sleep 0.02; done; echo 1000"), 1000);
  EXPECT_EQ(calls, 3);
}

TEST_F(HelperAlertRun, TerminationEndsRunsInsideRuns) {
  const std::string helper = makeHelper("echo $$ >>\"$HOME/processes\"; read line; echo 1000");
  long inner = 0;
  pollInMainLoop([&] {
    pollInMainLoop([this] {
      const std::string started = contentsOf("processes");
      if (std::count(started.begin(), started.end(), '\n') < 2) {
        return false;
      }
      terminate();
      return true;
    });
    inner = makeAlert(helper)->runModal();
    return true;
  });
  EXPECT_EQ(makeAlert(helper)->runModal(), Alert::kAbortReturn);
  EXPECT_EQ(inner, Alert::kAbortReturn);
  EXPECT_THAT(log(), ElementsAre(EndsWith("the application terminates"),
                                 EndsWith("the application terminates")));
  expectProcessesGone(2);
}

TEST_F(HelperAlertRun, AnAlertAfterTerminationIsNotWaitedFor) {
  terminate();
  EXPECT_EQ(run("sleep 1000"), Alert::kAbortReturn);
}

TEST_F(HelperAlertRun, TheRealHelperRefusesWrongArguments) {
  using Arguments = std::vector<std::string>;
  for (const Arguments& arguments : {Arguments{"loud", "Message", "Information", "OK"},
                                     Arguments{"warning", "Message", "Information"},
                                     Arguments{"warning", "Message", "Information", "OK", "No"}}) {
    Arguments command{kRealHelper};
    command.insert(command.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(ChildProcess(command).waitForExit(), 2) << testing::PrintToString(arguments);
  }
}

}  // namespace
}  // namespace vendril
