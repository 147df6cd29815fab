// Another working copy in the place of the one that is shown, and one that another client upgrades.
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>

#include "tests/reliability/WorldFixture.h"
#include "tests/scanner/ForeignDatabase.h"

namespace fs = std::filesystem;

namespace {

class ReplacedWorkingCopy : public WorldFixture {
 protected:
  ReplacedWorkingCopy() {
    other.addFile("another/one/file", "text\n");
    other.addFile("folder/clean", "text\n");
  }

  void checkOutOther() const {
    other.svn({"checkout", "--quiet", other.repositoryURL(), root});
    writeFile(root + "/folder/clean", "another size\n");
    writeFile(root + "/another/new", "");
  }

  const WorkingCopy other{session.directory(), "other"};
};

TEST_F(ReplacedWorkingCopy, ByACheckoutOfAnotherRepositoryIsShownAsWhatIsThereNow) {
  showAll();
  fs::rename(root, session / "away");
  checkOutOther();
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(root + "/another/new"), "unversioned");

  ASSERT_EQ(
      renameat2(AT_FDCWD, (session / "away").c_str(), AT_FDCWD, root.c_str(), RENAME_EXCHANGE), 0);
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(root + "/folder/deeper/changed"), "modified");
}

TEST_F(ReplacedWorkingCopy, ThatIsDeletedAndCheckedOutAgainIsShownAsWhatIsThereNow) {
  showAll();
  fs::remove_all(root);
  expectNoBadges();
  other.svn({"checkout", "--quiet", wc.repositoryURL(), root});
  writeFile(root + "/folder/clean", "another size\n");
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(root + "/folder/clean"), "modified");
}

TEST_F(ReplacedWorkingCopy, WhoseAdministrativeDirectoryAloneIsExchangedIsShownByTheNewOne) {
  showAll();
  other.svn({"checkout", "--quiet", other.repositoryURL(), session / "ready"});
  fs::rename(root + "/.svn", session / "old");
  fs::rename(session / "ready/.svn", root + "/.svn");
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(root + "/folder/deeper"), "unversioned");
}

// As an upgrade by another client makes it.
class UpgradedWorkingCopy : public WorldFixture {
 protected:
  void setFormat(int format) const {
    ForeignDatabase(root).execute("PRAGMA user_version = " + std::to_string(format));
  }

  bool waitForLogOf(const std::string &error) {
    const std::string line = "Status scan of <private> failed: " + error;
    return client.waitUntil([&] { return session.log().find(line) != std::string::npos; });
  }
};

TEST_F(UpgradedWorkingCopy, HasNoBadgesUntilItsFormatIsOneThatIsUnderstood) {
  constexpr int usual = 31;  // of Subversion 1.8 and later
  showAll();
  setFormat(99);
  EXPECT_TRUE(waitForLogOf("E155021")) << session.log();
  expectNoBadges();
  setFormat(29);  // of Subversion 1.7
  EXPECT_TRUE(waitForLogOf("E155036")) << session.log();
  expectNoBadges();
  setFormat(usual);
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(root + "/folder/deeper/changed"), "modified");
}

}  // namespace
