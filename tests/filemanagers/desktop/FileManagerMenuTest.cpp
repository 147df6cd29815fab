// The submenu of the context menu.
#include <gmock/gmock.h>

#include "tests/filemanagers/desktop/BusTraffic.h"
#include "tests/filemanagers/desktop/FileManagerFixture.h"
#include "tests/filemanagers/desktop/StoppedProcess.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace {

class FileManagerMenu : public FileManagerFixture {
 protected:
  // Nothing moves any more under the pointer.
  void openWindowWithAll() {
    openWindowAndList();
    if (fileManagerUnderTest().badgeSize > 0) {
      ASSERT_EQ(window->waitForBadges(allBadges), allBadges);
    }
  }

  bool waitForCommand() const {
    return turnMainLoopUntil([this] { return !application.commandNames().empty(); });
  }

  std::string sentAction() const { return *application.command().at("action").as<std::string>(); }
};

TEST_F(FileManagerMenu, ActsOnWhatIsSelected) {
  openWindowWithAll();
  EXPECT_THAT(
      window->openSubmenuOn({"clean item.txt", "unversioned.txt"}),
      ElementsAre("Show in Halvern", "Update", "Commit Changes…", "Add", "Ignore", "Revert…"));
  window->choose("Ignore");
  ASSERT_TRUE(waitForCommand());
  EXPECT_EQ(sentAction(), "ignore");
  EXPECT_THAT(application.sentPaths(),
              UnorderedElementsAre(wc / "clean item.txt", wc / "unversioned.txt"));
}

TEST_F(FileManagerMenu, ActsOnTheFolderWhereNothingIsSelected) {
  openWindowWithAll();
  EXPECT_THAT(
      window->openSubmenuOnBackground(),
      ElementsAre("Show in Halvern", "Update", "Commit Changes…", "Add", "Ignore", "Revert…"));
  window->choose("Update");
  ASSERT_TRUE(waitForCommand());
  EXPECT_EQ(sentAction(), "update");
  EXPECT_THAT(application.sentPaths(), ElementsAre(wc.path()));
}

TEST_F(FileManagerMenu, CostsNoMessageWhileTheSelectionMoves) {
  openWindow();
  listAndWatch();
  if (fileManagerUnderTest().badgeSize > 0) {
    ASSERT_EQ(window->waitForBadges(allBadges), allBadges);
  }
  ASSERT_FALSE(window->openSubmenuOn({"clean item.txt"}).empty());
  window->closeMenus();
  BusTraffic traffic(session.extension().bus());
  ASSERT_THAT(traffic.calls(), IsEmpty());
  for (const auto &[item, badge] : allBadges) {
    window->select({item});
  }
  window->select({"clean item.txt", "added item.txt"});
  EXPECT_TRUE(window->isResponsive());
  EXPECT_THAT(traffic.calls(), IsEmpty());
}

TEST_F(FileManagerMenu, WorksAfterTheExtensionWasKilled) {
  openWindowWithAll();
  ASSERT_FALSE(window->openSubmenuOn({"clean item.txt"}).empty());
  window->closeMenus();
  killExtension();
  EXPECT_TRUE(window->isResponsive());
  ASSERT_FALSE(window->openSubmenuOn({"clean item.txt"}).empty());
  window->choose("Update");
  ASSERT_TRUE(waitForCommand());
  EXPECT_THAT(application.sentPaths(), ElementsAre(wc / "clean item.txt"));
}

TEST_F(FileManagerMenu, DoesNotWaitForAnExtensionThatHangs) {
  openWindowWithAll();
  ASSERT_FALSE(window->openSubmenuOn({"clean item.txt"}).empty());
  {
    const StoppedProcess hangs(session.extension().extensionProcess());
    window->choose("Update");
    EXPECT_TRUE(window->isResponsive());
    EXPECT_FALSE(window->openSubmenuOnBackground().empty());
    window->closeMenus();
    EXPECT_THAT(application.commandNames(), IsEmpty());
  }
  ASSERT_TRUE(waitForCommand());
  EXPECT_THAT(application.sentPaths(), ElementsAre(wc / "clean item.txt"));
}

class FileManagerMenuWithoutTheExtension : public FileManagerFixture {
 protected:
  FileManagerMenuWithoutTheExtension() : FileManagerFixture({.isActivatable = false}) {}
};

TEST_F(FileManagerMenuWithoutTheExtension, HasNoSubmenu) {
  list();
  openWindow();
  const std::vector<std::string> titles = window->openMenuOn({"clean item.txt"});
  EXPECT_THAT(titles, Contains("Copy"));
  EXPECT_THAT(titles, Not(Contains("Halvern")));
  window->closeMenus();
  EXPECT_TRUE(window->isResponsive());
}

}  // namespace
