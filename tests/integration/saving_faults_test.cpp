// What becomes of the files that the application writes when the disk fails or the process is
// killed: whoever reads one afterwards finds the old file or the new one, whole.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <random>
#include <string>

#include "support/OwnNamespace.h"
#include "support/SavedFile.h"
#include "support/SmallDisk.h"
#include "support/UniqueFd.h"

namespace vendril {
namespace {

using testing::AllOf;
using testing::Each;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

struct DiskFault {
  const char* name;
  void (SmallDisk::*happen)() const;
};

void PrintTo(const DiskFault& fault, std::ostream* out) {
  *out << fault.name;
}

constexpr std::array kDiskFaults{DiskFault{"FullDisk", &SmallDisk::fill},
                                 DiskFault{"DiskWithoutRoomForAFile", &SmallDisk::useUpFiles},
                                 DiskFault{"ReadOnlyDisk", &SmallDisk::makeReadOnly}};

class SavingOnABadDisk : public testing::TestWithParam<std::tuple<SavedFile::Kind, DiskFault>> {
 protected:
  PrivateHome home_;
  RealHost host_;
};

TEST_P(SavingOnABadDisk, FailsAndKeepsTheOldFileWholeWithNothingBesideIt) {
  const auto [kind, fault] = GetParam();
  runInOwnNamespace(Own::mounts, [&, kind = kind, fault = fault] {
    const SmallDisk disk(home_.config());
    SavedFile file(kind, home_, host_);
    file.prepare();
    ASSERT_TRUE(file.save(1)) << "not even a good disk will do";
    ASSERT_TRUE(file.save(0));
    const std::string before = file.text();
    (disk.*fault.happen)();
    const std::vector<std::string> neighbours = file.neighbours();

    EXPECT_FALSE(file.save(1));

    EXPECT_TRUE(file.text() == before) << file.text();
    EXPECT_EQ(file.neighbours(), neighbours);
  });
}

INSTANTIATE_TEST_SUITE_P(Files, SavingOnABadDisk,
                         testing::Combine(testing::ValuesIn(SavedFile::kAll),
                                          testing::ValuesIn(kDiskFaults)),
                         [](const auto& instance) {
                           return nameOf(std::get<0>(instance.param)) + "On" +
                                  std::get<1>(instance.param).name;
                         });

class KilledWhileSaving : public testing::TestWithParam<SavedFile::Kind> {
 protected:
  static constexpr int kRounds = 200;

  /// Saves one version after the other until it is killed. Tells on `begun` when the first is
  /// written.
  [[noreturn]] static void saveForEver(SavedFile& file, int begun) {
    for (int version = 1;; version = 1 - version) {
      if (!file.save(version) || (begun >= 0 && ::write(begun, "x", 1) != 1)) {
        ::_exit(1);
      }
      begun = -1;
    }
  }

  /// Runs `saveForEver` in a child and kills it some time after its first save; false when it was
  /// not running any more.
  static bool killOneWhoSaves(SavedFile& file, std::chrono::nanoseconds after) {
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe(pipe.data()), 0);
    const UniqueFd told(pipe[0]);
    UniqueFd teller(pipe[1]);
    const pid_t child = ::fork();
    if (child == 0) {
      saveForEver(file, teller.get());
    }
    teller.reset();
    char mark = 0;
    EXPECT_EQ(::read(told.get(), &mark, 1), 1) << "the first save failed";
    const timespec wait{0, static_cast<long>(after.count())};
    ::ppoll(nullptr, 0, &wait, nullptr);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  }

  /// How long one save takes.
  static std::chrono::nanoseconds timeOf(SavedFile& file) {
    const auto begin = std::chrono::steady_clock::now();
    file.save(1);
    file.save(0);
    return (std::chrono::steady_clock::now() - begin) / 2;
  }

  PrivateHome home_;
  RealHost host_;
  SavedFile file_{GetParam(), home_, host_};
};

TEST_P(KilledWhileSaving, LeavesTheOldFileOrTheNewOneWhole) {
  file_.prepare();
  ASSERT_TRUE(file_.save(1));
  const std::string one = file_.text();
  ASSERT_TRUE(file_.save(0));
  const std::string zero = file_.text();
  ASSERT_FALSE(zero == one);
  std::minstd_rand random(static_cast<unsigned>(::getpid()));
  const std::chrono::nanoseconds longest = 4 * timeOf(file_);
  std::uniform_int_distribution<std::int64_t> moment(0, longest.count());
  int found = 0;
  for (int round = 0; round < kRounds; ++round) {
    ASSERT_TRUE(killOneWhoSaves(file_, std::chrono::nanoseconds(moment(random)))) << round;
    const std::string text = file_.text();
    ASSERT_TRUE(text == zero || text == one) << "round " << round << ":\n" << text;
    found += text == one ? 1 : 0;
  }
  EXPECT_GT(found, 0) << "no second version has ever been met";
  EXPECT_LT(found, kRounds) << "no first version has ever been met";
  EXPECT_TRUE(file_.save(1)) << "what a killed process leaves behind is in the way";
  // Hidden files that no list takes for an entry; they tell that saves were really cut short.
  EXPECT_THAT(file_.neighbours(), AllOf(Not(IsEmpty()), Each(StartsWith(".vendril-"))));
}

INSTANTIATE_TEST_SUITE_P(Files, KilledWhileSaving, testing::ValuesIn(SavedFile::kAll),
                         [](const auto& instance) { return nameOf(instance.param); });

}  // namespace
}  // namespace vendril
