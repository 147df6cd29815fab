// The badges that a file manager draws.
#include <gmock/gmock.h>

#include "tests/filemanagers/desktop/FileManagerFixture.h"

namespace {

using Badges = FileManagerWindow::Badges;

class FileManagerBadges : public FileManagerFixture {
 protected:
  FileManagerBadges() { openWindowAndList(); }
};

TEST_F(FileManagerBadges, EachItemHasItsOwnAndCleanOnesHaveNone) {
  EXPECT_EQ(window->waitForBadges(allBadges), allBadges);
}

TEST_F(FileManagerBadges, AppearWhenAFileIsEditedAndGoWhenItIsCommitted) {
  ASSERT_EQ(window->waitForBadges(allBadges), allBadges);

  writeFile(wc / "clean item.txt", "edited\n");
  writeFile(wc / "clean folder/inside the folder.txt", "edited\n");
  Badges edited = allBadges;
  edited["clean item.txt"] = "modified";
  edited["clean folder"] = "modified";
  EXPECT_EQ(window->waitForBadges(edited), edited);

  wc.svn({"commit", "-m", "a commit", "clean item.txt", "clean folder", "modified item.txt",
          "added item.txt"});
  Badges committed = allBadges;
  committed["modified item.txt"] = "";
  committed["added item.txt"] = "";
  EXPECT_EQ(window->waitForBadges(committed), committed);
}

TEST_F(FileManagerBadges, AreThereInAFolderThatIsOpenedLater) {
  ASSERT_EQ(window->waitForBadges(allBadges), allBadges);
  writeFile(wc / "clean folder/inside the folder.txt", "edited\n");
  window->openFolder("clean folder");
  const Badges inside = {{"inside the folder.txt", "modified"}, {"also inside.txt", ""}};
  EXPECT_EQ(window->waitForBadges(inside), inside);
}

}  // namespace
