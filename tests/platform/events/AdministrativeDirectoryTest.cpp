// A Subversion operation writes to its database thousands of times. That it is slowed down by
// hardly more than the first of them must not cost a change.
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "platform/linux/events/WatchedTrees.h"
#include "tests/platform/events/ReportedEvents.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// Trees that are turned by hand.
class AdministrativeDirectory : public ::testing::Test {
 protected:
  AdministrativeDirectory() {
    for (const char *name : {"wc.db", "wc.db-journal"}) {
      writeFile(wc + "/.svn/" + name, "");
    }
  }

  void watch(const std::vector<std::string> &rootPaths) {
    platform::WatchedTrees::Callbacks callbacks;
    callbacks.report = [this](const std::string &, std::string path) {
      paths.push_back(std::move(path));
    };
    callbacks.limitReached = [] { FAIL() << "no watch is left"; };
    trees.emplace(std::make_unique<platform::Inotify>(), rootPaths, platform::OwnFiles(), 1000,
                  callbacks);
    turn();
  }

  // Takes what is there, and forgets what was reported before.
  void turn() {
    paths.clear();
    takeEvents();
  }

  void takeEvents() {
    ASSERT_TRUE(trees->takeEvents());
    while (trees->hasWork()) {
      trees->work(std::chrono::seconds(1));
    }
  }

  static void write(const std::string &folder) {
    for (int i = 0; i < 100; ++i) {
      writeFile(folder + "/wc.db", "x");
      writeFile(folder + "/wc.db-journal", "x");
    }
  }

  const TemporaryDirectory directory;
  const std::string root = directory / "root";
  const std::string wc = root + "/wc";
  std::optional<platform::WatchedTrees> trees;
  std::vector<std::string> paths;
};

TEST_F(AdministrativeDirectory, TellsNoMoreOfChangedContentsUntilWhatItToldIsHandedOn) {
  watch({root});
  write(wc + "/.svn");
  turn();
  EXPECT_THAT(paths, Contains(wc + "/.svn/wc.db"));
  write(wc + "/.svn");
  turn();
  EXPECT_THAT(paths, IsEmpty());
  trees->listenAgain();
  writeFile(wc + "/.svn/wc.db", "x");
  turn();
  EXPECT_THAT(paths, Contains(wc + "/.svn/wc.db"));
}

TEST_F(AdministrativeDirectory, StillTellsOfFilesThatComeAndGo) {
  watch({root});
  write(wc + "/.svn");
  turn();
  fs::remove(wc + "/.svn/wc.db-journal");
  turn();
  EXPECT_THAT(paths, ElementsAre(wc + "/.svn/wc.db-journal"));
}

TEST_F(AdministrativeDirectory, OtherFoldersTellOfEveryChange) {
  writeFile(wc + "/folder/f", "");
  watch({root});
  writeFile(wc + "/folder/f", "x");
  turn();
  writeFile(wc + "/folder/f", "y");
  turn();
  EXPECT_THAT(paths, Contains(wc + "/folder/f"));
}

TEST_F(AdministrativeDirectory, ThatMovesWhileItRestsIsListenedToWhereItArrives) {
  watch({root});
  write(wc + "/.svn");
  turn();
  fs::rename(wc, root + "/moved");
  fs::create_directories(wc + "/.svn");
  trees->listenAgain();  // before it is known that it has moved
  turn();
  trees->listenAgain();
  writeFile(root + "/moved/.svn/wc.db", "y");
  turn();
  EXPECT_THAT(paths, Contains(root + "/moved/.svn/wc.db"));
}

TEST_F(AdministrativeDirectory, ThatHasMovedUnnoticedLeavesTheOneInItsPlaceAlone) {
  watch({root});
  write(wc + "/.svn");
  fs::rename(wc, root + "/moved");
  writeFile(wc + "/.svn/wc.db", "");
  turn();
  trees->listenAgain();
  takeEvents();
  trees->listenAgain();
  turn();
  for (const std::string &folder : {wc, root + "/moved"}) {
    writeFile(folder + "/.svn/wc.db", "y");
    turn();
    EXPECT_THAT(paths, Contains(folder + "/.svn/wc.db"));
  }
}

TEST_F(AdministrativeDirectory, InTwoTreesIsListenedToForBoth) {
  watch({root, wc});
  write(wc + "/.svn");
  turn();
  trees->listenAgain();
  writeFile(wc + "/.svn/wc.db", "y");
  turn();
  EXPECT_THAT(paths, testing::IsSupersetOf({wc + "/.svn/wc.db", wc + "/.svn/wc.db"}));
}

TEST_F(AdministrativeDirectory, ThatIsRemovedWhileItRestsAndMadeAnewIsListenedTo) {
  watch({root});
  write(wc + "/.svn");
  turn();
  fs::remove_all(wc + "/.svn");
  turn();
  trees->listenAgain();
  writeFile(wc + "/.svn/wc.db", "");
  turn();
  trees->listenAgain();
  writeFile(wc + "/.svn/wc.db", "y");
  turn();
  EXPECT_THAT(paths, Contains(wc + "/.svn/wc.db"));
}

TEST(AdministrativeDirectoryStream, ReportsTheLastOfManyChangesToo) {
  const TemporaryDirectory directory;
  const std::string root = directory.path();
  const std::string database = root + "/.svn/wc.db";
  writeFile(database, "");
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  for (int i = 0; i < 20; ++i) {
    events.waitUntilAllIsReported(root);
    events.clear();
    writeFile(database, std::to_string(i));
    ASSERT_TRUE(events.waitFor({database}));
  }
}

}  // namespace
