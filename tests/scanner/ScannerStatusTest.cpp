// What a scan reports of real working copies.
#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/scanner/Scan.h"
#include "tests/support/files/Subversion.h"

namespace fs = std::filesystem;

namespace {

using Nodes = std::map<std::string, ReportedNode>;

class ScannerStatus : public testing::Test {
 protected:
  // The reported nodes, which must be complete, by their paths relative to the root ("" for it).
  Nodes reported(const WorkingCopy &scanned) const {
    const Scan result = scan(scanned.path());
    EXPECT_EQ(result.error, 0);
    Nodes nodes;
    for (const auto &[path, node] : result.nodes) {
      EXPECT_TRUE(path.starts_with(scanned.path())) << path;
      const std::string relative = path.substr(scanned.path().size());
      nodes[relative.empty() ? "" : relative.substr(1)] = node;
    }
    return nodes;
  }
  Nodes reported() const { return reported(wc); }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
};

}  // namespace

TEST_F(ScannerStatus, ACleanWorkingCopyHasNothingToReport) {
  wc.addFile("folder/file", "contents");
  wc.svn({"update"});
  EXPECT_EQ(reported(), Nodes());
}

TEST_F(ScannerStatus, AModifiedTextOrPropertyIsModified) {
  wc.addFile("text", "old");
  wc.addFile("property", "old");
  wc.addFile("folder/inner", "old");
  writeFile(wc / "text", "another size");
  wc.svn({"propset", "name", "value", "property", "folder"});
  EXPECT_EQ(reported(), (Nodes{{"text", {svn_wc_status_modified}},
                               {"property", {svn_wc_status_modified}},
                               {"folder", {svn_wc_status_modified}}}));
}

TEST_F(ScannerStatus, TheRootIsReportedUnderItsOwnPath) {
  wc.svn({"propset", "name", "value", "."});
  EXPECT_EQ(scan(wc.path()).nodes, (Nodes{{wc.path(), {svn_wc_status_modified}}}));
}

TEST_F(ScannerStatus, AnAddedFolderIsReportedWithAllThatIsAddedInIt) {
  writeFile(wc / "folder/file", "new");
  wc.svn({"add", "folder"});
  EXPECT_EQ(reported(),
            (Nodes{{"folder", {svn_wc_status_added}}, {"folder/file", {svn_wc_status_added}}}));
}

TEST_F(ScannerStatus, ADeletedFolderIsReportedAlone) {
  wc.addFile("folder/file", "old");
  wc.addFile("file", "old");
  wc.addFile("kept", "old");
  wc.svn({"update"});
  wc.svn({"delete", "folder", "file"});
  wc.svn({"delete", "--keep-local", "kept"});
  EXPECT_EQ(reported(), (Nodes{{"folder", {svn_wc_status_deleted}},
                               {"file", {svn_wc_status_deleted}},
                               {"kept", {svn_wc_status_deleted}}}));
}

TEST_F(ScannerStatus, MissingItemsAreMissing) {
  wc.addFile("folder/file", "old");
  wc.addFile("file", "old");
  fs::remove_all(wc / "folder");
  fs::remove(wc / "file");
  const Nodes nodes = reported();
  EXPECT_EQ(nodes.at("file"), (ReportedNode{svn_wc_status_missing}));
  EXPECT_EQ(nodes.at("folder"), (ReportedNode{svn_wc_status_missing}));
}

TEST_F(ScannerStatus, AReplacedFileIsReplaced) {
  wc.addFile("file", "old");
  wc.svn({"delete", "file"});
  writeFile(wc / "file", "new");
  wc.svn({"add", "file"});
  EXPECT_EQ(reported(), (Nodes{{"file", {svn_wc_status_replaced}}}));
}

TEST_F(ScannerStatus, AMovedFileIsAddedThereAndDeletedHere) {
  wc.addFile("old name", "contents");
  wc.svn({"move", "old name", "new name"});
  EXPECT_EQ(reported(),
            (Nodes{{"old name", {svn_wc_status_deleted}}, {"new name", {svn_wc_status_added}}}));
}

TEST_F(ScannerStatus, ALockIsReportedOnAnItemThatIsOtherwiseUnchanged) {
  wc.addFile("locked", "old");
  wc.addFile("locked and modified", "old");
  wc.svn({"lock", "locked", "locked and modified"});
  writeFile(wc / "locked and modified", "another size");
  EXPECT_EQ(reported(),
            (Nodes{{"locked", {svn_wc_status_normal, false, true, false}},
                   {"locked and modified", {svn_wc_status_modified, false, true, false}}}));
}

TEST_F(ScannerStatus, ALockOfAnotherWorkingCopyIsNotReported) {
  wc.addFile("file", "old");
  wc.checkOutAgain("other").svn({"lock", "file"});
  EXPECT_EQ(reported(), Nodes());
}

TEST_F(ScannerStatus, UnversionedItemsAreReportedAtTheirTop) {
  writeFile(wc / "folder/file", "new");
  writeFile(wc / "file", "new");
  fs::create_symlink("nowhere", wc / "link");
  ASSERT_EQ(mkfifo((wc / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(reported(), (Nodes{{"folder", {svn_wc_status_unversioned}},
                               {"file", {svn_wc_status_unversioned}},
                               {"link", {svn_wc_status_unversioned}},
                               {"fifo", {svn_wc_status_unversioned}}}));
}

TEST_F(ScannerStatus, IgnoredItemsAreNotReported) {
  wc.svn({"propset", "svn:ignore", "*.ignored", "."});
  wc.commit();
  writeFile(wc / "a.ignored", "");
  writeFile(wc / "a.o", "");  // by the library's default patterns
  EXPECT_EQ(reported(), Nodes());
}

TEST_F(ScannerStatus, AFolderInTheFilesPlaceAndTheReverseAreObstructed) {
  wc.addFile("file", "old");
  wc.addFile("folder/inner", "old");
  fs::remove(wc / "file");
  fs::create_directory(wc / "file");
  fs::remove_all(wc / "folder");
  writeFile(wc / "folder", "");
  const Nodes nodes = reported();
  EXPECT_EQ(nodes.at("file"), (ReportedNode{svn_wc_status_obstructed}));
  EXPECT_EQ(nodes.at("folder"), (ReportedNode{svn_wc_status_obstructed}));
}

TEST_F(ScannerStatus, ATextConflictIsAConflict) {
  wc.addFile("file", "base\n");
  const WorkingCopy other = wc.checkOutAgain("other");
  writeFile(other / "file", "theirs, another size\n");
  other.commit();
  writeFile(wc / "file", "mine\n");
  wc.svn({"update", "--accept", "postpone"});
  const Nodes nodes = reported();
  EXPECT_EQ(nodes.at("file"), (ReportedNode{svn_wc_status_conflicted, true, false, false}));
  EXPECT_EQ(nodes.at("file.mine"), (ReportedNode{svn_wc_status_unversioned}));
}

TEST_F(ScannerStatus, APropertyConflictIsAConflict) {
  wc.addFile("file", "base\n");
  const WorkingCopy other = wc.checkOutAgain("other");
  other.svn({"propset", "name", "theirs", "file"});
  other.commit();
  wc.svn({"propset", "name", "mine", "file"});
  wc.svn({"update", "--accept", "postpone"});
  EXPECT_EQ(reported().at("file"), (ReportedNode{svn_wc_status_conflicted, true, false, false}));
}

TEST_F(ScannerStatus, ATreeConflictIsAConflictWhateverTheNodesStatus) {
  wc.addFile("edited here", "base\n");
  wc.addFile("deleted here", "base\n");
  const WorkingCopy other = wc.checkOutAgain("other");
  other.svn({"delete", "edited here"});
  writeFile(other / "deleted here", "theirs, another size\n");
  other.commit();
  writeFile(wc / "edited here", "mine\n");
  wc.svn({"delete", "deleted here"});
  wc.svn({"update", "--accept", "postpone"});
  const Nodes nodes = reported();
  EXPECT_TRUE(nodes.at("edited here").isConflicted);
  EXPECT_EQ(nodes.at("deleted here"), (ReportedNode{svn_wc_status_deleted, true, false, false}));
}

TEST_F(ScannerStatus, ASwitchedFolderIsReportedAsNormalAndSwitched) {
  wc.addFile("trunk/file", "trunk");
  wc.addFile("branch/file", "branch");
  wc.svn({"update"});
  wc.svn({"switch", "--ignore-ancestry", wc.repositoryURL() + "/branch", "trunk"});
  EXPECT_EQ(reported(), (Nodes{{"trunk", {svn_wc_status_normal, false, false, true}}}));
}

TEST_F(ScannerStatus, ExternalsAreEntered) {
  wc.addFile("library/file", "library");
  wc.addFile("project/file", "project");
  wc.svn({"propset", "svn:externals", "^/library dir\n^/library/file file-external", "project"});
  wc.commit();
  wc.svn({"update"});
  EXPECT_EQ(reported().at("project/dir"), (ReportedNode{svn_wc_status_external}));
  writeFile(wc / "project/dir/file", "another size altogether");
  writeFile(wc / "project/dir/new", "");
  const Nodes nodes = reported();
  EXPECT_EQ(nodes.at("project/dir/file"), (ReportedNode{svn_wc_status_modified}));
  EXPECT_EQ(nodes.at("project/dir/new"), (ReportedNode{svn_wc_status_unversioned}));
}

TEST_F(ScannerStatus, ASparseWorkingCopyDoesNotMissWhatItDoesNotHave) {
  wc.addFile("folder/file", "old");
  const WorkingCopy other = wc.checkOutAgain("other");
  other.svn({"update", "--set-depth", "empty", "folder"});
  EXPECT_EQ(reported(other), Nodes());
}

TEST_F(ScannerStatus, APathIsReportedBelowTheRootAsItWasGiven) {
  writeFile(wc / "file", "new");
  const std::string link = directory / "link";
  fs::create_directory_symlink("wc", link);
  EXPECT_EQ(scan(link).nodes, (Nodes{{link + "/file", {svn_wc_status_unversioned}}}));
  wc.svn({"propset", "name", "value", "."});
  EXPECT_EQ(scan(link).nodes.at(link), (ReportedNode{svn_wc_status_modified}));
}

TEST_F(ScannerStatus, AFolderInsideAWorkingCopyCanBeScannedToo) {
  wc.addFile("folder/file", "old");
  writeFile(wc / "folder/file", "another size");
  writeFile(wc / "outside", "");
  EXPECT_EQ(scan(wc / "folder").nodes, (Nodes{{wc / "folder/file", {svn_wc_status_modified}}}));
}

TEST_F(ScannerStatus, OddNamesAreReportedAsTheyAre) {
  Nodes expected;
  for (const char *name : {"with space", "at@sign", "trailing@", "-leading", "50%", "%20", "ümläut",
                           "日本語", "a\\b", "quote'\"", "#", "new\nline", "~name"}) {
    writeFile(wc / name, "");
    expected[name] = {svn_wc_status_unversioned};
  }
  EXPECT_EQ(reported(), expected);
}

TEST_F(ScannerStatus, ARootOfAnOddNameIsScanned) {
  writeFile(wc / "file", "new");
  for (const char *name :
       {"with space", "at@sign", "trailing@", "-leading", "50%", "ümläut", "new\nline", "a\\b"}) {
    const std::string root = directory / name;
    fs::copy(wc.path(), root, fs::copy_options::recursive);
    const Scan result = scan(root);
    EXPECT_EQ(result.error, 0) << name;
    EXPECT_EQ(result.nodes, (Nodes{{root + "/file", {svn_wc_status_unversioned}}})) << name;
  }
}

TEST_F(ScannerStatus, TheConfigurationDirectoryCounts) {
  writeFile(wc / "file.mine-to-ignore", "");
  writeFile(wc / "file.o", "");
  writeFile(directory / "config/config", "[miscellany]\nglobal-ignores = *.mine-to-ignore\n");
  EXPECT_EQ(scan(wc.path(), directory / "config").nodes,
            (Nodes{{wc / "file.o", {svn_wc_status_unversioned}}}));
}

TEST_F(ScannerStatus, TheDepthCounts) {
  wc.addFile("folder/file", "old");
  writeFile(wc / "folder/file", "another size");
  writeFile(wc / "top", "");
  KTREnsureSVNCoreInitialization();
  std::vector<std::string> paths;
  svn_error_t *error = KTRWorkingCopyStatusScanner::scanLocalTarget(
      wc.path(), "/dev/null",
      KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_immediates),
      [&](const char *path, const svn_client_status_t *,
          const svn_wc_status2_t *) -> svn_error_t * {
        paths.emplace_back(path);
        return SVN_NO_ERROR;
      });
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(paths, (std::vector<std::string>{wc / "top"}));
}

TEST_F(ScannerStatus, ScansOnSeveralThreadsAtOnceReportTheSame) {
  for (int i = 0; i < 20; ++i) {
    writeFile(wc / ("folder" + std::to_string(i) + "/file"), "new");
  }
  wc.svn({"add", "--force", "--quiet", "."});
  const Nodes expected = scan(wc.path()).nodes;
  EXPECT_EQ(expected.size(), 40U);
  std::vector<std::future<int>> scans;
  for (int thread = 0; thread < 4; ++thread) {
    scans.push_back(std::async(std::launch::async, [&] {
      int differences = 0;
      for (int round = 0; round < 10; ++round) {
        const Scan result = scan(wc.path());
        differences += result.error == 0 && result.nodes == expected ? 0 : 1;
      }
      return differences;
    }));
  }
  for (std::future<int> &differences : scans) {
    EXPECT_EQ(differences.get(), 0);
  }
}
