// What must be observed when a walk is divided. Every directory is walked apart from the others
// here, by several threads, and what is reported must be what the library reports in one call.
#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "tests/scanner/ForeignDatabase.h"
#include "tests/scanner/WalkComparison.h"
#include "tests/support/files/Subversion.h"

namespace fs = std::filesystem;

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class WalkInParts : public testing::Test {
 protected:
  WalkInParts() {
    KTREnsureSVNCoreInitialization();
    for (const char *folder : {"a", "a/b", "a/b/c", "d", "d/e"}) {
      for (const char *file : {"one", "two"}) {
        writeFile(wc / (std::string(folder) + "/" + file), "contents\n");
      }
    }
    wc.svn({"add", "--quiet", "a", "d"});
    wc.commit();
    wc.svn({"update", "--quiet"});
  }

  void expectSameReports() const {
    const WalkReports expected = reportsOfLibrary(wc.path());
    EXPECT_EQ(expected.error, 0);
    EXPECT_FALSE(expected.nodes.empty()) << "the test shows nothing";
    for (const unsigned threadCount : {1U, 2U, 4U}) {
      EXPECT_EQ(differencesOf(reportsOfWalk(wc.path(), forcedPlan(threadCount)), expected), "")
          << threadCount << " threads";
    }
  }

  // With folders in it, and files that differ from those that it may replace.
  void makeTree(const std::string &name) const {
    writeFile(wc / (name + "/b/other"), "another\n");
    writeFile(wc / (name + "/one"), "another size\n");
  }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
};

}  // namespace

TEST_F(WalkInParts, ACleanWorkingCopyHasNothingToReport) {
  EXPECT_THAT(reportsOfWalk(wc.path(), forcedPlan(4)).nodes, IsEmpty());
}

TEST_F(WalkInParts, FoldersAreReportedOnceAndSoIsTheRoot) {
  wc.svn({"propset", "name", "value", ".", "a", "a/b", "a/b/c", "d/e"});
  expectSameReports();
  EXPECT_THAT(reportsOfWalk(wc.path(), forcedPlan(4)).nodes, SizeIs(5));
}

TEST_F(WalkInParts, OfADeletedTreeOnlyTheTopIsReported) {
  wc.svn({"delete", "a"});
  wc.svn({"delete", "--keep-local", "d"});
  writeFile(wc / "d/e/unversioned", "");
  expectSameReports();
}

TEST_F(WalkInParts, OfACopiedTreeTheTopAndWhatHasChangedInItIsReported) {
  wc.svn({"copy", "a", "copy"});
  writeFile(wc / "copy/b/c/one", "another size\n");
  wc.svn({"delete", "copy/b/two"});
  wc.svn({"copy", "d", "copy/b/inner copy"});
  wc.svn({"delete", "copy/b/inner copy/e"});
  expectSameReports();
}

TEST_F(WalkInParts, OfAnAddedTreeEverythingIsReported) {
  makeTree("new");
  wc.svn({"add", "new"});
  wc.svn({"copy", "a", "new/b/copy"});
  writeFile(wc / "new/b/unversioned", "");
  expectSameReports();
}

TEST_F(WalkInParts, OfAReplacedTreeIsReportedWhatTheLibraryReports) {
  wc.svn({"delete", "a", "d"});
  makeTree("a");
  wc.svn({"add", "a"});
  wc.svn({"copy", wc.repositoryURL() + "/a/b", "d"});
  expectSameReports();
}

TEST_F(WalkInParts, AMovedTreeIsReportedAtBothItsPlaces) {
  wc.svn({"move", "a/b", "d/moved"});
  wc.svn({"move", "d/e/one", "d/e/moved"});
  writeFile(wc / "d/moved/c/one", "another size\n");
  expectSameReports();
}

TEST_F(WalkInParts, WhatIsUnchangedAndYetReportedIsReported) {
  wc.svn({"copy", "-m", "a branch", wc.repositoryURL() + "/a", wc.repositoryURL() + "/branch"});
  wc.svn({"switch", "--quiet", "--ignore-ancestry", wc.repositoryURL() + "/branch/b", "a/b"});
  wc.svn({"lock", "d/one", "d/e/one", "d/e/two"});
  writeFile(wc / "d/e/two", "another size\n");
  wc.svn({"changelist", "a list", "d/two", "a/two"});
  expectSameReports();
}

TEST_F(WalkInParts, ConflictsAreReported) {
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "a/b/one", "theirs, of another size\n");
  other.svn({"propset", "name", "theirs", "d", "d/e/one"});
  other.svn({"delete", "a/b/c", "d/two"});
  other.commit();
  writeFile(wc / "a/b/one", "mine\n");
  wc.svn({"propset", "name", "mine", "d", "d/e/one"});
  writeFile(wc / "a/b/c/one", "mine\n");
  writeFile(wc / "d/two", "mine\n");
  wc.svn({"update", "--quiet", "--accept", "postpone"});
  expectSameReports();
}

TEST_F(WalkInParts, MissingAndObstructedFoldersAreReported) {
  fs::remove_all(wc / "a/b");
  fs::remove_all(wc / "d/e");
  writeFile(wc / "d/e", "a file in the folder's place");
  fs::remove(wc / "d/one");
  fs::create_directories(wc / "d/one/folder");
  expectSameReports();
}

TEST_F(WalkInParts, ASparseWorkingCopyDoesNotMissWhatItDoesNotHave) {
  wc.svn({"update", "--quiet", "--set-depth", "empty", "a/b"});
  wc.svn({"update", "--quiet", "--set-depth", "exclude", "d/e"});
  writeFile(wc / "a/one", "another size\n");
  expectSameReports();
}

TEST_F(WalkInParts, IgnoredItemsAreNotReported) {
  wc.svn({"propset", "svn:ignore", "*.out", "a", "a/b"});
  wc.svn({"propset", "svn:global-ignores", "*.log", "a"});
  for (const char *name : {"a/x.out", "a/b/x.out", "a/b/c/x.out", "a/b/c/x.log", "d/x.log"}) {
    writeFile(wc / name, "");
  }
  expectSameReports();
}

TEST_F(WalkInParts, FoldersOfOddNamesAreWalked) {
  for (const char *name : {"with space", "at@sign", "trailing@", "-leading", "50%", "%20", "ümläut",
                           "日本語", "a\\b", "quote'\"", "a!", "a0", "a."}) {
    writeFile(wc / (std::string(name) + "/inner/file"), "");
    wc.svn({"add", "--quiet", "./" + std::string(name) + "@"});
  }
  wc.commit();
  for (const auto &entry : fs::recursive_directory_iterator(wc.path())) {
    if (entry.path().filename() == "file") {
      writeFile(entry.path(), "another size\n");
    }
  }
  expectSameReports();
}

TEST_F(WalkInParts, LinksToFoldersAreNotFollowed) {
  fs::create_directory_symlink("..", wc / "a/up");
  fs::create_directory_symlink("../d", wc / "a/versioned");
  wc.svn({"add", "a/versioned"});
  wc.commit();
  fs::remove_all(wc / "a/b/c");
  fs::create_directory_symlink("../../d", wc / "a/b/c");
  expectSameReports();
}

// Were the folder above divided, "a/b" would no longer be compared with it and so not be switched.
TEST_F(WalkInParts, AVersionedFolderThatIsAWorkingCopyOfItsOwnIsWalkedWithTheOneAbove) {
  fs::remove_all(wc / "a/b");
  wc.svn({"checkout", "--quiet", wc.repositoryURL() + "/d", directory / "own"});
  fs::rename(directory / "own", wc / "a/b");
  writeFile(wc / "a/b/e/one", "another size\n");
  expectSameReports();

  fs::copy(wc / ".svn", wc / "d/e/.svn", fs::copy_options::recursive);
  expectSameReports();
}

TEST_F(WalkInParts, AWorkingCopyThatIsUnversionedInAnotherIsNotEntered) {
  wc.svn({"checkout", "--quiet", wc.repositoryURL() + "/d", "a/b/own"});
  writeFile(wc / "a/b/own/new", "");
  expectSameReports();
}

TEST_F(WalkInParts, TheBlockIsCalledOnTheCallingThreadAlone) {
  wc.svn({"propset", "name", "value", "--recursive", "."});
  const auto calling = std::this_thread::get_id();
  std::promise<void> anotherWalks;
  std::once_flag once;
  const WalkPlan plan = forcedPlan(4, [&](const std::string &) {
    if (std::this_thread::get_id() != calling) {
      std::call_once(once, [&] { anotherWalks.set_value(); });
    }
    return true;
  });
  std::atomic<int> elsewhere = 0;
  std::atomic<int> calls = 0;
  const KTRWorkingCopyEntryBlock block = [&](auto...) -> svn_error_t * {
    elsewhere += std::this_thread::get_id() == calling ? 0 : 1;
    if (++calls == 1) {
      anotherWalks.get_future().wait();  // so that not all is done by the calling thread
    }
    return SVN_NO_ERROR;
  };
  StatusWalk walk(wc.path(), "/dev/null", {}, block, plan);
  EXPECT_EQ(walk.run(), nullptr);
  EXPECT_EQ(calls, 16);
  EXPECT_EQ(elsewhere, 0);
}

TEST_F(WalkInParts, AnErrorOfTheBlockEndsAllThreadsAndIsReturned) {
  wc.svn({"propset", "name", "value", "--recursive", "."});
  for (int failingCall = 1; failingCall <= 16; ++failingCall) {
    int calls = 0;
    const KTRWorkingCopyEntryBlock block = [&](auto...) -> svn_error_t * {
      return ++calls == failingCall ? svn_error_create(APR_EACCES, nullptr, "enough")
                                    : SVN_NO_ERROR;
    };
    StatusWalk walk(wc.path(), "/dev/null", {}, block, forcedPlan(3));
    const SVNError error = walk.run();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->apr_err, APR_EACCES);
    EXPECT_STREQ(error->message, "enough");
    EXPECT_TRUE(walk.isRefused());
    EXPECT_EQ(calls, failingCall);
  }
}

TEST_F(WalkInParts, ABlockThatThrowsEndsAllThreadsWithAnError) {
  wc.svn({"propset", "name", "value", "--recursive", "."});
  for (int failingCall = 1; failingCall <= 16; ++failingCall) {
    int calls = 0;
    const KTRWorkingCopyEntryBlock block = [&](auto...) -> svn_error_t * {
      if (++calls == failingCall) {
        throw std::runtime_error("enough");
      }
      return SVN_NO_ERROR;
    };
    StatusWalk walk(wc.path(), "/dev/null", {}, block, forcedPlan(3));
    const SVNError error = walk.run();
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(svn_error_root_cause(error.get())->message, "enough");
    EXPECT_EQ(calls, failingCall);
  }
}

TEST_F(WalkInParts, ADatabaseThatIsNoneIsAnErrorOnAllThreads) {
  writeFile(wc / ".svn/wc.db", "garbage");
  EXPECT_NE(reportsOfWalk(wc.path(), forcedPlan(4)).error, 0);
}

// Divided below the folder that defines it, an external would no longer be known as one.
TEST_F(WalkInParts, AWorkingCopyWithExternalsIsWalkedByOneThread) {
  wc.svn({"propset", "svn:externals", "^/d a/b/c/deep", "."});
  wc.commit();
  wc.svn({"update", "--quiet"});
  writeFile(wc / "a/b/c/deep/e/one", "another size\n");
  ForeignDatabase(wc.path()).grow();
  const WalkReports expected = reportsOfLibrary(wc.path());
  EXPECT_THAT(expected.nodes, Contains(HasSubstr("a/b/c/deep node 13 ")));
  EXPECT_EQ(differencesOf(reportsOfScanner(wc.path()), expected), "");
  EXPECT_NE(differencesOf(reportsOfWalk(wc.path(), forcedPlan(2)), expected), "");

  // What counts is what the last update has brought, not what the property says.
  wc.svn({"propdel", "svn:externals", "."});
  EXPECT_EQ(differencesOf(reportsOfScanner(wc.path()), reportsOfLibrary(wc.path())), "");
}

TEST_F(WalkInParts, TheScannerDividesALargeWorkingCopyAndReportsTheSame) {
  ForeignDatabase(wc.path()).grow();
  wc.svn({"propset", "name", "value", "--recursive", "a"});
  wc.svn({"delete", "d"});
  ASSERT_GT(planForWorkingCopy(wc.path(), 2).threadCount, 1U);
  const WalkReports expected = reportsOfLibrary(wc.path());
  EXPECT_THAT(expected.nodes, Not(IsEmpty()));
  EXPECT_EQ(differencesOf(reportsOfScanner(wc.path()), expected), "");
}
