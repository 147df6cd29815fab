// What one directory that the library cannot walk costs: not the others. Names that are not valid
// UTF-8 stand for most such errors here; ClosedDirectoryTest has those of file modes.
#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <utility>

#include "tests/scanner/WalkComparison.h"
#include "tests/support/files/Subversion.h"

namespace fs = std::filesystem;

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char *badName = "\xFF";

class WalkAroundErrors : public testing::Test {
 protected:
  WalkAroundErrors() {
    KTREnsureSVNCoreInitialization();
    for (const char *folder : {"a", "a/b", "a/b/c", "d", "d/e"}) {
      writeFile(wc / (std::string(folder) + "/changed"), "contents\n");
      writeFile(wc / (std::string(folder) + "/clean"), "contents\n");
    }
    wc.svn({"add", "--quiet", "a", "d"});
    wc.commit();
    wc.svn({"update", "--quiet"});
    for (const char *folder : {"a", "a/b", "a/b/c", "d", "d/e"}) {
      writeFile(wc / (std::string(folder) + "/changed"), "another size\n");
    }
  }

  // That everything is reported as if these items were not there, and the error besides; the
  // folders that hold them have nothing else that is unversioned.
  void expectAllReportsDespite(const std::vector<std::string> &badItems) const {
    const WalkReports expected = reportsOfLibrary(wc.path());
    ASSERT_EQ(expected.error, 0);
    for (const std::string &item : badItems) {
      writeFile(wc / item, "");
    }
    EXPECT_EQ(reportsOfLibrary(wc.path()).error, APR_EINVAL);
    expectReports(expected, reportsOfScanner(wc.path()), "the scanner");
    if (!hasExternals) {
      for (const unsigned threadCount : {1U, 3U}) {
        expectReports(expected, reportsOfWalk(wc.path(), forcedPlan(threadCount)), "all apart");
        expectReports(expected,
                      reportsOfWalk(wc.path(), forcedPlan(threadCount,
                                                          [this](const std::string &path) {
                                                            return path == wc.path();
                                                          })),
                      "the root apart");
      }
    }
  }

  std::set<fs::path> pristineTexts() const {
    std::set<fs::path> texts;
    for (const auto &entry : fs::recursive_directory_iterator(wc / ".svn/pristine")) {
      if (entry.is_regular_file()) {
        texts.insert(entry.path());
      }
    }
    return texts;
  }

  static void expectReports(WalkReports expected, WalkReports actual, const char *how) {
    // What came before the error may come again.
    actual.nodes.erase(std::unique(actual.nodes.begin(), actual.nodes.end()), actual.nodes.end());
    expected.error = APR_EINVAL;
    EXPECT_EQ(differencesOf(actual, expected), "") << how;
  }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
  bool hasExternals = false;
};

}  // namespace

TEST_F(WalkAroundErrors, ANameInAFolderCostsNothingElse) {
  expectAllReportsDespite({std::string("a/b/") + badName});
}

TEST_F(WalkAroundErrors, ANameInTheRootCostsNothingElse) {
  expectAllReportsDespite({badName});
}

TEST_F(WalkAroundErrors, NamesInManyFoldersCostNothingElse) {
  expectAllReportsDespite({std::string(badName) + "1", std::string("a/") + badName,
                           std::string("a/b/") + badName, std::string("d/e/") + badName,
                           std::string("d/e/x") + badName});
}

TEST_F(WalkAroundErrors, AFolderThatIsChangedItselfIsReportedThough) {
  wc.svn({"propset", "name", "value", "a/b", "a/b/c", "d"});
  expectAllReportsDespite({std::string("a/b/") + badName});
}

TEST_F(WalkAroundErrors, UnversionedItemsElsewhereAreReported) {
  writeFile(wc / "new", "");
  writeFile(wc / "a/new", "");
  writeFile(wc / "a/b/c/new/file", "");
  writeFile(wc / "d/e/new", "");
  expectAllReportsDespite({std::string("a/b/") + badName});
}

TEST_F(WalkAroundErrors, UnversionedItemsBesideTheNameAreNotFound) {
  writeFile(wc / "a/b/new", "");
  const WalkReports before = reportsOfLibrary(wc.path());
  EXPECT_THAT(before.nodes, Contains(HasSubstr("/a/b/new ")));
  writeFile(wc / (std::string("a/b/") + badName), "");
  EXPECT_THAT(reportsOfScanner(wc.path()).nodes, Not(Contains(HasSubstr("/a/b/new "))));
}

TEST_F(WalkAroundErrors, TreesThatAreAddedCopiedReplacedOrDeletedAreReportedAsEver) {
  writeFile(wc / "new/inner/file", "");
  wc.svn({"add", "new"});
  wc.svn({"copy", "a", "copy"});
  wc.svn({"delete", "--force", "--keep-local", "a"});
  wc.svn({"delete", "--force", "d"});
  wc.svn({"copy", wc.repositoryURL() + "/a/b", "d"});
  expectAllReportsDespite({std::string("new/inner/") + badName, std::string("copy/b/") + badName,
                           std::string("a/b/") + badName, std::string("d/c/") + badName});
}

TEST_F(WalkAroundErrors, AnExternalStaysOneAndIsEntered) {
  wc.svn({"propset", "svn:externals", "^/d a/b/c/deep/external", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "a/b/c/deep/external/e/clean", "another size\n");
  hasExternals = true;
  EXPECT_THAT(reportsOfLibrary(wc.path()).nodes, Contains(HasSubstr("/deep node 13 ")));
  expectAllReportsDespite({std::string("a/") + badName});
}

TEST_F(WalkAroundErrors, ANameInAnExternalCostsNothingElse) {
  wc.svn({"propset", "svn:externals", "^/d first\n^/d second", "a"});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "a/first/e/clean", "another size\n");
  writeFile(wc / "a/second/e/clean", "another size\n");
  hasExternals = true;
  expectAllReportsDespite(
      {std::string("a/first/e/") + badName, std::string("a/second/") + badName});
}

// Without an end to be seen: each link leads to both again.
TEST_F(WalkAroundErrors, ExternalsThatHaveBecomeLinksAreNotFollowed) {
  wc.svn({"propset", "svn:externals", "^/d first\n^/d second", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  for (const char *name : {"first", "second"}) {
    fs::remove_all(wc / name);
    fs::create_symlink(".", wc / name);
  }
  writeFile(wc / "a/b/c/clean", "edited");
  writeFile(wc / badName, "");
  const WalkReports reports = reportsOfScanner(wc.path());
  EXPECT_EQ(reports.error, APR_EINVAL);
  EXPECT_THAT(reports.nodes, Contains(HasSubstr("/a/b/c/clean ")));
  EXPECT_LT(reports.nodes.size(), 20U);
}

// Nothing can be said of that file without its text as it was.
TEST_F(WalkAroundErrors, AFileWhoseTextIsLostCostsNothingElse) {
  const std::set<fs::path> others = pristineTexts();
  wc.addFile("a/lost", "contents of its own\n");
  writeFile(wc / "a/b/c/clean", "edited");
  writeFile(wc / "a/clean", "edited");
  const WalkReports before = reportsOfLibrary(wc.path());
  for (const fs::path &text : pristineTexts()) {
    if (!others.contains(text)) {
      fs::remove(text);
    }
  }
  const std::string lost = wc / "a/lost";
  fs::last_write_time(lost, fs::last_write_time(lost) + std::chrono::hours(1));
  EXPECT_NE(reportsOfLibrary(wc.path()).error, 0);
  for (WalkReports actual :
       {reportsOfScanner(wc.path()), reportsOfWalk(wc.path(), forcedPlan(3))}) {
    EXPECT_NE(std::exchange(actual.error, 0), 0);
    actual.nodes.erase(std::unique(actual.nodes.begin(), actual.nodes.end()), actual.nodes.end());
    EXPECT_EQ(differencesOf(actual, before), "");
  }
}

TEST_F(WalkAroundErrors, AnErrorOfTheBlockEndsTheWalkAroundAnError) {
  writeFile(wc / (std::string("a/b/c/") + badName), "");
  int calls = 0;
  const KTRWorkingCopyEntryBlock block = [&](const char *path, auto...) -> svn_error_t * {
    ++calls;
    return path == wc / "d/e/changed" ? svn_error_create(SVN_ERR_CANCELLED, nullptr, "enough")
                                      : SVN_NO_ERROR;
  };
  const SVNError error(
      KTRWorkingCopyStatusScanner::scanLocalTarget(wc.path(), "/dev/null", {}, block));
  ASSERT_NE(error, nullptr);
  EXPECT_STREQ(error->message, "enough");
  EXPECT_GT(calls, 0);
}

TEST_F(WalkAroundErrors, ToTheDepthOfTheFolderAloneNothingIsWalkedAround) {
  writeFile(wc / badName, "");
  int calls = 0;
  const KTRWorkingCopyEntryBlock block = [&](auto...) -> svn_error_t * {
    ++calls;
    return SVN_NO_ERROR;
  };
  const SVNError error(KTRWorkingCopyStatusScanner::scanLocalTarget(
      wc.path(), "/dev/null",
      KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_immediates), block));
  EXPECT_NE(error, nullptr);
  EXPECT_EQ(calls, 0);
}
