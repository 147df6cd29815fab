// Scans that fail: each returns an error, and the next one works.
#include <cstdint>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/scanner/ForeignDatabase.h"
#include "tests/scanner/Scan.h"
#include "tests/support/files/Subversion.h"

namespace fs = std::filesystem;

namespace {

class ScannerFailure : public testing::Test {
 protected:
  void SetUp() override {
    KTREnsureSVNCoreInitialization();
    writeFile(wc / "folder/file", "contents");
    writeFile(wc / "folder/another", "contents");
    wc.svn({"add", "--quiet", "folder"});
  }

  std::string databasePath() const { return wc / ".svn/wc.db"; }

  // That the process and the library are as good as new.
  void expectThatAnotherScanWorks() const {
    writeFile(other / "file", "");
    const Scan result = scan(other.path());
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(result.nodes.size(), 1U);
  }

  static void addExternal(const std::string &root, const std::string &path) {
    ForeignDatabase(root).execute(
        "INSERT INTO EXTERNALS (wc_id, local_relpath, parent_relpath, repos_id, presence, kind, "
        "def_local_relpath, def_repos_relpath) VALUES (1, '" +
        path + "', '', 1, 'normal', 'dir', '', '')");
  }

  svn_error_t *scanWith(const KTRWorkingCopyEntryBlock &entryBlock) const {
    return KTRWorkingCopyStatusScanner::scanLocalTarget(
        wc.path(), "/dev/null",
        KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity), entryBlock);
  }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
  const WorkingCopy other{wc.checkOutAgain("other")};
};

}  // namespace

TEST_F(ScannerFailure, APathThatTheLibraryWouldNotBearIsAnError) {
  for (const std::string &path :
       {std::string(), std::string("."), std::string("relative/wc"), std::string("~"),
        wc.path() + "/", wc.path() + "//folder", wc.path() + "/.", wc.path() + "/./folder",
        wc.path() + "\xFF", wc.path() + std::string("\0x", 2), std::string("\xC3")}) {
    const Scan result = scan(path);
    EXPECT_EQ(result.error, SVN_ERR_BAD_FILENAME) << path;
    EXPECT_TRUE(result.nodes.empty());
  }
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, WhatIsNoWorkingCopyIsAnError) {
  writeFile(directory / "plain/file", "");
  EXPECT_EQ(scan(directory / "plain").error, SVN_ERR_WC_NOT_WORKING_COPY);
  EXPECT_EQ(scan(directory / "missing").error, SVN_ERR_WC_NOT_WORKING_COPY);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, AMissingDatabaseIsAnError) {
  fs::remove(databasePath());
  EXPECT_NE(scan(wc.path()).error, 0);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, ADatabaseThatWasCutOffIsAnError) {
  const std::string whole = readFileForTest(databasePath());
  ASSERT_GT(whole.size(), 8192U);
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{1}, std::size_t{50}, std::size_t{100}, std::size_t{1024},
        std::size_t{4096}, whole.size() / 4, whole.size() / 2}) {
    writeFile(databasePath(), std::string_view(whole).substr(0, length));
    EXPECT_NE(scan(wc.path()).error, 0) << length;
  }
  expectThatAnotherScanWorks();
  writeFile(databasePath(), whole);
  EXPECT_EQ(scan(wc.path()).error, 0);
}

TEST_F(ScannerFailure, GarbageInPlaceOfTheDatabaseIsAnError) {
  for (const std::string &garbage : {std::string("garbage"), std::string(20'000, '\xA5'),
                                     "SQLite format 3" + std::string(20'000, '\0')}) {
    writeFile(databasePath(), garbage);
    EXPECT_NE(scan(wc.path()).error, 0);
  }
  fs::remove(databasePath());
  fs::create_directory(databasePath());
  EXPECT_NE(scan(wc.path()).error, 0);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, ADatabaseThatIsALinkIsAnErrorAndWhatItLeadsToStaysAsItIs) {
  const fs::path elsewhere = directory / "elsewhere.db";
  fs::rename(databasePath(), elsewhere);
  // Which the library would write: it wants another way of keeping journals.
  std::string contents = readFileForTest(elsewhere);
  contents[18] = contents[19] = 2;
  writeFile(elsewhere, contents);
  fs::create_symlink(elsewhere, databasePath());
  EXPECT_NE(scan(wc.path()).error, 0);
  EXPECT_TRUE(readFileForTest(elsewhere) == contents);
  EXPECT_FALSE(fs::exists(directory / "elsewhere.db-wal"));
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, AViewInPlaceOfATableIsAnErrorHoweverLongItWouldTake) {
  for (const std::string table : {"NODES", "WCROOT", "EXTERNALS", "ACTUAL_NODE"}) {
    const std::string whole = readFileForTest(databasePath());
    ForeignDatabase(wc.path()).execute(
        "ALTER TABLE " + table + " RENAME TO WAS_" + table + "; CREATE VIEW " + table +
        " AS WITH RECURSIVE counter(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM counter) "
        "SELECT WAS_" +
        table + ".* FROM counter LEFT JOIN WAS_" + table);
    EXPECT_NE(scan(wc.path()).error, 0) << table;
    writeFile(databasePath(), whole);
    EXPECT_EQ(scan(wc.path()).error, 0);
    ForeignDatabase(wc.path()).execute("ALTER TABLE " + table + " RENAME TO WAS_" + table +
                                       "; CREATE VIEW " + table + " AS SELECT * FROM WAS_" + table);
    EXPECT_NE(scan(wc.path()).error, 0) << table;
    writeFile(databasePath(), whole);
  }
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, AJournalThatNamesAnotherFileCostsThatFileNothing) {
  for (const std::string &named : {directory / "letter", wc / ".svn/letter"}) {
    writeFile(named, "dear");
    leaveJournalThatNames(named, wc.path());
    scan(wc.path());
    EXPECT_FALSE(fs::exists(databasePath() + "-journal")) << "it was looked at";
    ASSERT_TRUE(fs::exists(named)) << named;
    EXPECT_EQ(readFileForTest(named), "dear");
    EXPECT_EQ(scan(wc.path()).error, 0);
  }
}

// The library walks in such a circle until its stack is at its end.
TEST_F(ScannerFailure, AnExternalThatIsTheWorkingCopyItselfIsAnError) {
  for (const char *external : {"../wc", "../wc/../wc", "folder/../../wc"}) {
    addExternal(wc.path(), external);
    EXPECT_EQ(scan(wc.path()).error, SVN_ERR_WC_CORRUPT) << external;
  }
  expectThatAnotherScanWorks();
}

// By which each level has twice as many as the one above it, whatever their paths.
TEST_F(ScannerFailure, ExternalsThatLeadBackByLinksAreAnError) {
  const std::string inner = wc / "inner";
  fs::create_directory(inner);
  fs::create_directory_symlink(".", wc / "one");
  fs::create_directory_symlink(".", wc / "two");
  fs::create_directory_symlink("..", inner + "/one");
  fs::create_directory_symlink("..", inner + "/two");
  addExternal(wc.path(), "one/inner");
  addExternal(wc.path(), "two/inner");
  fs::copy(wc / ".svn", inner + "/.svn", fs::copy_options::recursive);
  EXPECT_EQ(scan(wc.path()).error, SVN_ERR_WC_CORRUPT);
  writeFile(wc / "folder/\xFF", "with an error beside them, too");
  EXPECT_NE(scan(wc.path()).error, 0);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, ADatabaseThatWasReplacedIsReadAnew) {
  EXPECT_EQ(scan(wc.path()).nodes.size(), 3U);
  fs::rename(wc.path(), directory / "moved away");
  fs::copy(other.path(), wc.path(), fs::copy_options::recursive);
  const Scan result = scan(wc.path());
  EXPECT_EQ(result.error, 0);
  EXPECT_TRUE(result.nodes.empty());
}

TEST_F(ScannerFailure, ARootThatIsGoneIsAnError) {
  EXPECT_EQ(scan(wc.path()).error, 0);
  fs::remove_all(wc.path());
  EXPECT_EQ(scan(wc.path()).error, SVN_ERR_WC_NOT_WORKING_COPY);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, ANameThatIsNotUTF8IsAnErrorAndCostsNoVersionedItem) {
  writeFile(wc / "folder/\xFF", "");
  const Scan result = scan(wc.path());
  EXPECT_NE(result.error, 0);
  EXPECT_EQ(result.nodes.size(), 3U);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, AConfigurationThatCannotBeReadCostsNoScan) {
  const std::size_t nodes = scan(wc.path()).nodes.size();
  writeFile(directory / "broken/config", "this is [no configuration\n=\n");
  fs::create_directories(directory / "directory/config");
  writeFile(directory / "file", "");
  fs::create_directory(directory / "never opens");
  ASSERT_EQ(mkfifo((directory / "never opens/config").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo((directory / "never opens/servers").c_str(), 0600), 0);
  for (const char *name : {"broken", "directory", "file", "missing", "never opens"}) {
    const Scan result = scan(wc.path(), directory / name);
    EXPECT_EQ(result.error, 0) << name;
    EXPECT_EQ(result.nodes.size(), nodes) << name;
  }
  EXPECT_FALSE(fs::exists(directory / "missing"));
}

// As those have it who keep all their configuration in one place.
TEST_F(ScannerFailure, AConfigurationMayBeALink) {
  writeFile(directory / "kept/subversion", "[miscellany]\nglobal-ignores = *.odd\n");
  fs::create_directory(directory / "configuration");
  fs::create_symlink(directory / "kept/subversion", directory / "configuration/config");
  writeFile(wc / "file.odd", "ignored by that configuration alone");
  const Scan result = scan(wc.path(), directory / "configuration");
  EXPECT_EQ(result.error, 0);
  EXPECT_FALSE(result.nodes.contains(wc / "file.odd"));
}

TEST_F(ScannerFailure, AConfigurationDirectoryMayBeWrittenInAnyForm) {
  writeFile(directory / "configuration/config", "[miscellany]\nglobal-ignores = *.odd\n");
  writeFile(wc / "file.odd", "ignored by that configuration alone");
  const std::string base = directory.path();
  for (const std::string &form :
       {base + "/configuration", base + "/configuration/", base + "//configuration",
        base + "/./configuration/.", base + "/configuration/../configuration"}) {
    const Scan result = scan(wc.path(), form);
    EXPECT_EQ(result.error, 0) << form;
    EXPECT_FALSE(result.nodes.contains(wc / "file.odd")) << form;
  }
}

TEST_F(ScannerFailure, AnErrorOfTheEntryBlockStopsTheWalkAndIsReturned) {
  int calls = 0;
  svn_error_t *error = scanWith([&](auto...) {
    ++calls;
    return svn_error_create(SVN_ERR_CANCELLED, nullptr, "enough");
  });
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->apr_err, SVN_ERR_CANCELLED);
  EXPECT_STREQ(svn_error_root_cause(error)->message, "enough");
  svn_error_clear(error);
  EXPECT_EQ(calls, 1);
}

TEST_F(ScannerFailure, AnEntryBlockThatThrowsStopsTheWalkWithAnError) {
  int calls = 0;
  svn_error_t *error = scanWith([&](auto...) -> svn_error_t * {
    ++calls;
    throw std::runtime_error("enough");
  });
  ASSERT_NE(error, nullptr);
  EXPECT_STREQ(svn_error_root_cause(error)->message, "enough");
  svn_error_clear(error);
  EXPECT_EQ(calls, 1);
  expectThatAnotherScanWorks();
}

TEST_F(ScannerFailure, AnEntryBlockThatThrowsWhatIsNoExceptionStopsTheWalkWithAnErrorToo) {
  svn_error_t *error = scanWith([](auto...) -> svn_error_t * { throw 7; });
  EXPECT_NE(error, nullptr);
  svn_error_clear(error);
  expectThatAnotherScanWorks();
}
