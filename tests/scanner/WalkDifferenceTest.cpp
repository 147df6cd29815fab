// Random working copies, walked in parts and in one go: the reports are the same. 208 of them: each
// of 52 is compared at four stages of what happens to it.
#include <functional>
#include <gtest/gtest.h>

#include "tests/scanner/RandomWorkingCopy.h"
#include "tests/scanner/WalkComparison.h"
#include "tests/support/NumberFromEnvironment.h"

namespace {

constexpr unsigned batches = 4;
constexpr unsigned workingCopiesPerBatch = 13;
constexpr int stages = 4;
constexpr int changesPerStage = 3;
constexpr unsigned defaultSeed = 70'000;

unsigned firstSeed() {
  return static_cast<unsigned>(numberFromEnvironment("HALVERN_SEED", defaultSeed));
}

class WalkDifference : public testing::TestWithParam<unsigned> {
 protected:
  static void compare(const std::string &root, unsigned seed) {
    const WalkReports expected = reportsOfLibrary(root);
    EXPECT_EQ(expected.error, 0);
    EXPECT_EQ(differencesOf(reportsOfWalk(root, {}), expected), "") << "in one go";
    EXPECT_EQ(differencesOf(reportsOfWalk(root, forcedPlan(3)), expected), "") << "all apart";
    for (const unsigned threadCount : {1U, 2U, 5U}) {
      const auto isShared = [=](const std::string &directory) {
        return (std::hash<std::string>()(directory) ^ seed ^ threadCount) % 2 == 0;
      };
      EXPECT_EQ(differencesOf(reportsOfWalk(root, forcedPlan(threadCount, isShared)), expected), "")
          << threadCount << " threads";
    }
  }
};

}  // namespace

TEST_P(WalkDifference, AWalkInPartsReportsWhatTheLibraryReportsInOneCall) {
  for (unsigned i = 0; i < workingCopiesPerBatch; ++i) {
    const unsigned seed = firstSeed() + GetParam() * workingCopiesPerBatch + i;
    const TemporaryDirectory directory;
    // One with externals is not divided.
    RandomWorkingCopy workingCopy(directory, seed, RandomWorkingCopy::Externals::none);
    for (int stage = 0; stage < stages; ++stage) {
      for (int change = 0; change < changesPerStage; ++change) {
        workingCopy.change();
      }
      compare(workingCopy.path(), seed);
      ASSERT_FALSE(HasFailure()) << "HALVERN_SEED=" << seed << " fails in the first batch, after\n"
                                 << workingCopy.history();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Batches, WalkDifference, testing::Range(0U, batches));
