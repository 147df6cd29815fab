// Directories that may not be read. The launcher of this program sees to it that modes bind.
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/scanner/WalkComparison.h"
#include "tests/support/files/Subversion.h"

namespace {

class ClosedDirectory : public testing::Test {
 protected:
  ClosedDirectory() {
    for (const char *folder : {"a", "a/closed", "a/closed/inner", "d", "d/e"}) {
      writeFile(wc / (std::string(folder) + "/file"), "contents\n");
    }
    wc.svn({"add", "--quiet", "a", "d"});
    wc.commit();
    for (const char *folder : {"a", "a/closed", "a/closed/inner", "d", "d/e"}) {
      writeFile(wc / (std::string(folder) + "/file"), "another size\n");
      writeFile(wc / (std::string(folder) + "/new"), "");
    }
  }
  ~ClosedDirectory() override { EXPECT_EQ(chmod(closed.c_str(), 0700), 0); }

  void expectTheRestDespite(mode_t mode) const {
    WalkReports expected = reportsOfLibrary(wc.path());
    ASSERT_EQ(expected.error, 0);
    std::erase_if(expected.nodes,
                  [this](const std::string &line) { return line.starts_with(closed + "/"); });
    expected.error = APR_EACCES;
    ASSERT_EQ(chmod(closed.c_str(), mode), 0);
    EXPECT_NE(reportsOfLibrary(wc.path()).error, 0);
    for (WalkReports actual : {reportsOfScanner(wc.path()), reportsOfWalk(wc.path(), forcedPlan(1)),
                               reportsOfWalk(wc.path(), forcedPlan(3))}) {
      // What came before the error may come again.
      actual.nodes.erase(std::unique(actual.nodes.begin(), actual.nodes.end()), actual.nodes.end());
      EXPECT_EQ(differencesOf(actual, expected), "");
    }
  }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
  const std::string closed = wc / "a/closed";
};

}  // namespace

TEST_F(ClosedDirectory, ADirectoryThatMayNotBeEnteredCostsWhatIsBelowIt) {
  expectTheRestDespite(0000);
}

TEST_F(ClosedDirectory, ADirectoryThatMayBeListedAloneCostsWhatIsBelowIt) {
  expectTheRestDespite(0400);
}

TEST_F(ClosedDirectory, ARootThatMayNotBeReadIsAnError) {
  ASSERT_EQ(chmod(wc.path().c_str(), 0000), 0);
  const WalkReports reports = reportsOfScanner(wc.path());
  ASSERT_EQ(chmod(wc.path().c_str(), 0700), 0);
  EXPECT_NE(reports.error, 0);
  EXPECT_TRUE(reports.nodes.empty());
}

TEST_F(ClosedDirectory, AnUnversionedDirectoryThatMayNotBeReadCostsNothing) {
  ASSERT_EQ(mkdir((wc / "d/unversioned").c_str(), 0000), 0);
  const WalkReports expected = reportsOfLibrary(wc.path());
  EXPECT_EQ(expected.error, 0);
  EXPECT_THAT(expected.nodes, testing::Contains(testing::HasSubstr("/d/unversioned ")));
  EXPECT_EQ(differencesOf(reportsOfScanner(wc.path()), expected), "");
}
