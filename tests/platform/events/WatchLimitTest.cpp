// What happens when not everything can be watched. Runs where the user may watch 3,000 directories.
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/events/Inotify.h"
#include "platform/linux/events/WatchLimit.h"
#include "tests/platform/events/ReportedEvents.h"
#include "tests/support/bus/PrivateBus.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr std::size_t limit = 3000;
constexpr std::size_t leftToOthers = 1024;

class WatchLimit : public ::testing::Test {
 protected:
  void SetUp() override { fs::create_directories(root); }

  void makeFolders(const std::string &parent, int count) const {
    for (int i = 0; i < count; ++i) {
      fs::create_directories(parent + "/" + std::to_string(i) + "/inner");
    }
  }

  TemporaryDirectory directory;
  const std::string root = directory / "root";
};

TEST_F(WatchLimit, IsTheSmallerOfTheKernelsTwo) {
  EXPECT_EQ(platform::currentWatchLimit().count, limit);
  EXPECT_EQ(platform::currentWatchLimit().setting, "user.max_inotify_watches");
}

TEST_F(WatchLimit, BelowItNothingIsSaid) {
  makeFolders(root, 500);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  EXPECT_THAT(events.logLines(), IsEmpty());
}

TEST_F(WatchLimit, WhatIsWatchedStaysWatchedAndOneLogLineNamesTheSettingToRaise) {
  makeFolders(root, 1500);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  EXPECT_EQ(watchCountOfThisProcess(), limit - leftToOthers);
  writeFile(root + "/1499/f", "");
  writeFile(root + "/f", "");
  EXPECT_TRUE(events.waitFor({root + "/1499/f", root + "/f"})) << "the upper folders come first";
  makeFolders(root + "/more", 10);
  events.waitUntilAllIsReported(root);
  ASSERT_THAT(events.logLines(), ElementsAre(HasSubstr("raise user.max_inotify_watches")));
  EXPECT_THAT(events.logLines().front(), HasSubstr("3000"));
}

TEST_F(WatchLimit, OthersCanWatchTheRest) {
  makeFolders(root, 1500);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  makeFolders(directory / "others", 512);
  platform::Inotify others;
  for (const auto &entry : fs::recursive_directory_iterator(directory / "others")) {
    ASSERT_GE(others.addWatch(entry.path(), platform::Inotify::everyChange), 0) << entry.path();
  }
}

TEST_F(WatchLimit, WatchesThatOthersHaveTakenAreMissedQuietly) {
  makeFolders(directory / "others", 1400);
  platform::Inotify others;
  for (const auto &entry : fs::recursive_directory_iterator(directory / "others")) {
    ASSERT_GE(others.addWatch(entry.path(), platform::Inotify::everyChange), 0);
  }
  makeFolders(root, 500);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  writeFile(root + "/f", "");
  EXPECT_TRUE(events.waitFor({root + "/f"}));
  EXPECT_THAT(events.logLines(), ElementsAre(HasSubstr("raise user.max_inotify_watches")));
}

TEST_F(WatchLimit, AFolderThatIsWatchedIsStillFollowedWhenNoWatchIsLeft) {
  makeFolders(root, 1500);
  fs::create_directories(root + "/a");
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  fs::rename(root + "/a", root + "/b");
  events.waitUntilAllIsReported(root);
  events.clear();
  writeFile(root + "/b/f", "");
  events.waitUntilAllIsReported(root);
  EXPECT_THAT(events.paths(), Contains(root + "/b/f"));
}

TEST_F(WatchLimit, WithoutAnInstanceOfTheKernelsOneLogLineSaysSoAndItGoesOnWhenThereIsOne) {
  const auto allowInstances = [](int count) {
    writeFile("/proc/sys/user/max_inotify_instances", std::to_string(count));
  };
  allowInstances(0);
  ReportedEvents events({root});
  EXPECT_TRUE(turnMainLoopUntil([&] { return !events.logLines().empty(); }));
  EXPECT_THAT(events.logLines(), ElementsAre(HasSubstr("raise fs.inotify.max_user_instances")));
  allowInstances(100);
  ASSERT_TRUE(events.waitFor({root}));
  writeFile(root + "/f", "");
  EXPECT_TRUE(events.waitFor({root + "/f"}));
  EXPECT_THAT(events.logLines(), ::testing::SizeIs(1));
}

TEST_F(WatchLimit, WatchesThatBecomeFreeServeNewFolders) {
  makeFolders(root, 1500);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  fs::remove_all(root + "/0");
  fs::remove_all(root + "/1");
  fs::create_directories(root + "/new");
  events.waitUntilAllIsReported(root);
  writeFile(root + "/new/f", "");
  EXPECT_TRUE(events.waitFor({root + "/new/f"}));
}

}  // namespace
