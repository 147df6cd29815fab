// Whether and how a walk is divided.
#include <algorithm>
#include <gtest/gtest.h>

#include "scanner/AdministrativeDatabase.h"
#include "scanner/WalkPlan.h"
#include "tests/scanner/ForeignDatabase.h"
#include "tests/scanner/Scan.h"
#include "tests/support/files/Subversion.h"

namespace {

class WalkPlanTest : public testing::Test {
 protected:
  WalkPlanTest() {
    for (int i = 0; i < 200; ++i) {
      writeFile(wc / ("large/inner/" + std::to_string(i)), "");
    }
    writeFile(wc / "large.too/file", "");
    writeFile(wc / "small/file", "");
    wc.svn({"add", "--quiet", "large", "large.too", "small"});
    wc.commit();
  }

  unsigned threads() const { return planForWorkingCopy(wc.path(), 4).threadCount; }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
};

}  // namespace

TEST_F(WalkPlanTest, ASmallWorkingCopyIsWalkedByOneThreadAsAWhole) {
  const WalkPlan plan = planForWorkingCopy(wc.path(), 4);
  EXPECT_EQ(plan.threadCount, 1U);
  EXPECT_FALSE(plan.isWorthDividing(wc.path()));
}

TEST_F(WalkPlanTest, ALargeWorkingCopyIsWalkedByAllThreads) {
  ForeignDatabase(wc.path()).grow();
  EXPECT_EQ(threads(), 4U);
}

TEST_F(WalkPlanTest, OneProcessorHasOneThread) {
  ForeignDatabase(wc.path()).grow();
  EXPECT_EQ(planForWorkingCopy(wc.path(), 1).threadCount, 1U);
}

TEST_F(WalkPlanTest, OnlyDirectoriesWithMuchInTheirFoldersAreDivided) {
  ForeignDatabase(wc.path()).grow();
  const WalkPlan plan = planForWorkingCopy(wc.path(), 4);
  EXPECT_TRUE(plan.isWorthDividing(wc.path()));
  EXPECT_TRUE(plan.isWorthDividing(wc / "large"));
  EXPECT_FALSE(plan.isWorthDividing(wc / "large/inner")) << "it has no folders";
  EXPECT_FALSE(plan.isWorthDividing(wc / "large.too"));
  EXPECT_FALSE(plan.isWorthDividing(wc / "small"));
  EXPECT_FALSE(plan.isWorthDividing(wc / "larg"));
  EXPECT_FALSE(plan.isWorthDividing(wc / "missing"));
}

// As many calls of the library as folders would cost more than is gained.
TEST_F(WalkPlanTest, AFolderOfManySmallFoldersIsNotDivided) {
  for (int i = 0; i < 400; ++i) {
    writeFile(wc / ("wide/" + std::to_string(i) + "/file"), "");
  }
  wc.svn({"add", "--quiet", "wide"});
  ForeignDatabase(wc.path()).grow();
  EXPECT_FALSE(planForWorkingCopy(wc.path(), 4).isWorthDividing(wc / "wide"));
  EXPECT_TRUE(planForWorkingCopy(wc.path(), 4).isWorthDividing(wc.path()));
}

TEST_F(WalkPlanTest, NothingIsDividedFarBelowTheRoot) {
  std::string deep = "deep";
  for (int level = 0; level < 40; ++level) {
    deep += "/d";
  }
  for (int i = 0; i < 400; ++i) {
    writeFile(wc / (deep + "/one/" + std::to_string(i)), "");
  }
  wc.svn({"add", "--quiet", "deep"});
  ForeignDatabase(wc.path()).grow();
  const WalkPlan plan = planForWorkingCopy(wc.path(), 4);
  EXPECT_TRUE(plan.isWorthDividing(wc / "deep"));
  EXPECT_TRUE(plan.isWorthDividing(wc / "deep/d/d"));
  EXPECT_FALSE(plan.isWorthDividing(wc / deep));
}

TEST_F(WalkPlanTest, ThereAreNoMoreThanEightThreads) {
  ForeignDatabase(wc.path()).grow();
  EXPECT_EQ(planForWorkingCopy(wc.path(), 128).threadCount, 8U);
}

TEST_F(WalkPlanTest, NumbersOfRowsAtTheEndsOfTheirRangeDoNoHarm) {
  ForeignDatabase(wc.path()).grow();
  ForeignDatabase(wc.path()).execute(
      "UPDATE NODES SET rowid = 9223372036854775807 WHERE local_relpath = 'small/file';"
      "UPDATE NODES SET rowid = -9223372036854775807 WHERE local_relpath = 'small'");
  EXPECT_EQ(threads(), 4U);
  EXPECT_EQ(scan(wc.path()).error, 0);
}

// The library ends the process over some of them.
TEST_F(WalkPlanTest, ExternalsThatLieOutsideTheWorkingCopyAreNotBelieved) {
  for (const char *path : {"", "/", ".", "../other", "a/..", "a//b", "a/", "/etc"}) {
    ForeignDatabase(wc.path()).execute(
        "DELETE FROM EXTERNALS; INSERT INTO EXTERNALS (wc_id, local_relpath, parent_relpath, "
        "repos_id, presence, kind, def_local_relpath, def_repos_relpath) VALUES (1, '" +
        std::string(path) + "', '', 1, 'normal', 'dir', '', 'a')");
    EXPECT_FALSE(AdministrativeDatabase(wc.path()).externals()) << path;
  }
}

TEST_F(WalkPlanTest, AFolderInsideAWorkingCopyIsWalkedByOneThread) {
  ForeignDatabase(wc.path()).grow();
  EXPECT_EQ(planForWorkingCopy(wc / "large", 4).threadCount, 1U);
}

TEST_F(WalkPlanTest, ADatabaseThatIsNoneIsLeftToTheLibrary) {
  writeFile(wc / ".svn/wc.db", std::string(3'000'000, 'x'));
  EXPECT_EQ(threads(), 1U);
  EXPECT_NE(scan(wc.path()).error, 0);
}

TEST_F(WalkPlanTest, ADatabaseOfAnotherLayoutIsLeftToTheLibrary) {
  ForeignDatabase(wc.path()).grow();
  ForeignDatabase(wc.path()).execute("ALTER TABLE EXTERNALS RENAME TO OTHERS");
  EXPECT_EQ(threads(), 1U);
}

TEST_F(WalkPlanTest, ADatabaseThatAnotherProgramHasLockedIsLeftToTheLibrary) {
  ForeignDatabase(wc.path()).grow();
  const ForeignDatabase locked(wc.path());
  locked.execute("BEGIN EXCLUSIVE");
  EXPECT_EQ(threads(), 1U);
}

// It keeps writers out; those who read share the database all the same.
TEST_F(WalkPlanTest, AConfigurationThatLocksTheDatabaseExclusivelyCostsNoScan) {
  ForeignDatabase(wc.path()).grow();
  writeFile(directory / "config/config", "[working-copy]\nexclusive-locking = true\n");
  writeFile(wc / "small/file", "another size");
  const Scan result = scan(wc.path(), directory / "config");
  EXPECT_EQ(result.error, 0);
  EXPECT_TRUE(result.nodes.contains(wc / "small/file"));
}

TEST_F(WalkPlanTest, TheSampleFollowsTheNodes) {
  wc.svn({"update", "--quiet", "--set-depth", "infinity"});  // which has written many anew
  const auto sample = AdministrativeDatabase(wc.path()).sampleOfNodes(100);
  ASSERT_TRUE(sample);
  EXPECT_GT(sample->size(), 40U);
  EXPECT_LE(sample->size(), 100U);
  const auto others = std::count_if(sample->begin(), sample->end(), [&](const SampledNode &node) {
    return !node.path.starts_with(wc / "large/inner/");
  });
  EXPECT_LE(others, 8) << "there are no more";
  EXPECT_EQ(std::adjacent_find(sample->begin(), sample->end()), sample->end());
}
