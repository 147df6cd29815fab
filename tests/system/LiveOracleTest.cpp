// The whole system at work: what a file manager shows of a working copy in which things happen,
// compared with what a fresh `svn status` says once they have happened.
#include <gtest/gtest.h>
#include <random>

#include "tests/scanner/RandomWorkingCopy.h"
#include "tests/scanner/StatusOracle.h"
#include "tests/support/NumberFromEnvironment.h"
#include "tests/support/session/ExtensionSession.h"
#include "tests/support/session/FileManagerClient.h"
#include "tests/system/ShownItems.h"

namespace fs = std::filesystem;

namespace {

constexpr unsigned sequences = 4;
constexpr int stepsPerSequence = 5;
constexpr unsigned greatestBurst = 12;  // changes in one step
constexpr unsigned defaultSeed = 20261;

unsigned firstSeed() {
  return static_cast<unsigned>(numberFromEnvironment("HALVERN_SEED", defaultSeed));
}

// A file manager that shows all of a working copy.
class LiveOracle : public testing::TestWithParam<unsigned> {
 protected:
  LiveOracle() {
    // The extension and the command see the same Subversion configuration.
    fs::create_directories(session_.sharedPath());
    fs::create_directory_symlink(directory_ / "configuration",
                                 session_.sharedPath("SubversionConfig"));
    EXPECT_EQ(session_.halvern({"add", workingCopy_.path()}).status, 0);
  }

  // One change, or many without a pause.
  void change() {
    const std::size_t count = random_() % 2 == 0 ? 1 : 1 + random_() % greatestBurst;
    for (std::size_t i = 0; i < count; ++i) {
      random_() % 3 == 0 ? workingCopy_.rearrange() : workingCopy_.change();
    }
  }

  // Lists the folders anew, and besides what only Subversion knows of; then waits until what is
  // shown is right.
  void compare() {
    const OracleBadges oracle =
        badgesByStatusCommand(workingCopy_.path(), workingCopy_.status({"--xml"}));
    std::set<std::string> items = itemsOnDisk(workingCopy_.path());
    for (const auto &[path, badge] : oracle.badges) {
      items.insert(path);
    }
    client_.show(items);
    client_.waitUntil(
        [&] { return client_.isSettled() && client_.badgeByPath() == oracle.badges; });
    client_.catchUp();
    EXPECT_EQ(differences(client_.badgeByPath(), oracle.badges), "");
  }

  const unsigned seed_ = firstSeed() + GetParam();
  const TemporaryDirectory directory_;
  RandomWorkingCopy workingCopy_{directory_, seed_};
  const ExtensionSession session_;
  FileManagerClient client_{session_.bus()};
  std::mt19937 random_{seed_};
};

}  // namespace

TEST_P(LiveOracle, WhatIsShownBecomesWhatAFreshStatusRunSays) {
  compare();
  for (int step = 0; step < stepsPerSequence && !HasFailure(); ++step) {
    change();
    compare();
  }
  // What is still under way when it is right for the first time does not make it wrong again.
  const gint64 quiet = g_get_monotonic_time() + 4 * G_USEC_PER_SEC;
  turnMainLoopUntil([quiet] { return g_get_monotonic_time() >= quiet; });
  compare();
  EXPECT_FALSE(HasFailure()) << "svn status:\n"
                             << workingCopy_.status() << "HALVERN_SEED=" << seed_
                             << " fails in the first sequence, after\n"
                             << workingCopy_.history();
}

INSTANTIATE_TEST_SUITE_P(Sequences, LiveOracle, testing::Range(0U, sequences));
