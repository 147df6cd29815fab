// Scans for which the system has no memory: they fail, and nothing else does; and the root is not
// held responsible.
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/reliability/RunningScan.h"
#include "tests/reliability/WorldFixture.h"
#include "tests/support/processes/ProcessFigures.h"
#include "tests/support/processes/ProcessTree.h"

using ::testing::AnyOf;
using ::testing::HasSubstr;

namespace {

constexpr rlim_t kibibyte = 1 << 10;
constexpr rlim_t mebibyte = 1 << 20;

class MemoryRunsOut : public WorldFixture {
 protected:
  // The process, and what it starts from now on, may have that much more memory than it has.
  void leave(pid_t process, rlim_t left) {
    ASSERT_EQ(prlimit(process, RLIMIT_DATA, nullptr, &usual_), 0);
    const rlimit limit{dataOfProcess(process) + left, usual_.rlim_max};
    ASSERT_EQ(prlimit(process, RLIMIT_DATA, &limit, nullptr), 0);
  }
  void leaveUsual(pid_t process) const {
    ASSERT_EQ(prlimit(process, RLIMIT_DATA, &usual_, nullptr), 0);
  }

  // What a new scan finds of an item that is changed.
  std::string badgeByNewScan() {
    const std::string url = platform::FileURL::fromPath(wc / "folder/deeper/changed").text();
    EXPECT_EQ(asker.call("EndObservingDirectory", g_variant_new("(s)", url.c_str())), "");
    asker.set.clear();
    EXPECT_EQ(asker.requestBadges({url}), "");
    EXPECT_TRUE(asker.waitForBadges(1)) << "it does not answer";
    return asker.set.empty() ? "none" : asker.set.front().second;
  }

  void endWorker() const {
    if (const pid_t worker = workerOf(extension); worker >= 0) {
      kill(worker, SIGKILL);
      EXPECT_TRUE(waitForProcessEnd(worker));
    }
  }

  BusClient asker{session.bus()};

 private:
  rlimit usual_{};
};

TEST_F(MemoryRunsOut, ForAScanCostsItsBadgesUntilThereIsSome) {
  showAll();
  for (const rlim_t left : {0 * mebibyte, 64 * kibibyte, 256 * kibibyte, 1 * mebibyte, 2 * mebibyte,
                            4 * mebibyte, 7 * mebibyte, 9 * mebibyte}) {
    const pid_t worker = workerOf(extension);
    ASSERT_GE(worker, 0);
    leave(worker, left);
    const std::string badge = badgeByNewScan();
    EXPECT_THAT(badge, AnyOf("", "modified")) << left;
    if (left <= 1 * mebibyte) {
      EXPECT_EQ(badge, "") << left << ": the limit is none";
    }
    leaveUsual(worker);
    EXPECT_EQ(badgeByNewScan(), "modified") << left << ": the root is held responsible\n"
                                            << session.log();
  }
  EXPECT_THAT(session.log(), HasSubstr("There is not enough memory"));
  EXPECT_EQ(session.extensionProcess(), extension);
}

TEST_F(MemoryRunsOut, ForAScanIsMadeUpForByTheNextChange) {
  showAll();
  const pid_t worker = workerOf(extension);
  leave(worker, 0);
  writeFile(wc / "folder/clean", "another size\n");
  expectNoBadges();
  EXPECT_EQ(asker.directoryURLs().size(), 1U);
  leaveUsual(worker);
  writeFile(wc / "folder/clean", "yet another size\n");
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(wc / "folder/clean"), "modified");
}

TEST_F(MemoryRunsOut, ForAWorkerCostsBadgesUntilThereIsSome) {
  showAll();
  std::vector<pid_t> spawners = processesOfProgram("halvern-finder-sync", extension);
  std::erase(spawners, extension);
  ASSERT_EQ(spawners.size(), 1U);
  const pid_t spawner = spawners.front();
  leave(spawner, 3 * mebibyte);
  endWorker();
  EXPECT_EQ(badgeByNewScan(), "") << "the limit is none";
  EXPECT_EQ(asker.directoryURLs().size(), 1U);
  leaveUsual(spawner);
  endWorker();  // which has the limit that it was started with
  EXPECT_EQ(badgeByNewScan(), "modified") << session.log();
  EXPECT_EQ(session.extensionProcess(), extension);
}

}  // namespace
