// File systems that come and go in and at watched trees. Mounts are seen by this process alone.
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include "tests/platform/events/ReportedEvents.h"

namespace fs = std::filesystem;
using ::testing::IsEmpty;

namespace {

class MountedEvents : public ::testing::Test {
 protected:
  MountedEvents() { fs::create_directories(root); }

  TemporaryDirectory directory;
  const std::string root = directory / "root";
};

TEST_F(MountedEvents, AFolderThatIsMountedAtASecondPlaceComesToRest) {
  fs::create_directories(root + "/a/in a");
  fs::create_directories(root + "/b");
  ASSERT_EQ(mount((root + "/a").c_str(), (root + "/b").c_str(), nullptr, MS_BIND, nullptr), 0);
  {
    ReportedEvents events({root});
    ASSERT_TRUE(events.waitFor({root}));
    fs::create_directories(root + "/new");
    events.waitUntilAllIsReported(root);
    events.clear();
    const std::size_t callbacks = events.callbackCount();
    events.waitUntilAllIsReported(root);
    EXPECT_EQ(events.callbackCount(), callbacks + 1);
    EXPECT_THAT(events.paths(), IsEmpty());
  }
  EXPECT_EQ(umount2((root + "/b").c_str(), MNT_DETACH), 0);
}

TEST_F(MountedEvents, AFileSystemThatIsMountedAtTheRootIsNoticedAndSoIsItsEnd) {
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  for (int round = 0; round < 2; ++round) {
    events.clear();
    ASSERT_EQ(mount("none", root.c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_TRUE(events.waitFor({root}));
    writeFile(root + "/mounted", "");
    EXPECT_TRUE(events.waitFor({root + "/mounted"}));
    events.clear();
    ASSERT_EQ(umount(root.c_str()), 0);
    EXPECT_TRUE(events.waitFor({root}));
    writeFile(root + "/beneath", std::to_string(round));
    EXPECT_TRUE(events.waitFor({root + "/beneath"}));
  }
}

TEST_F(MountedEvents, AFileSystemThatGoesAwayInsideIsReported) {
  fs::create_directories(root + "/d");
  ASSERT_EQ(mount("none", (root + "/d").c_str(), "tmpfs", 0, nullptr), 0);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  ASSERT_EQ(umount((root + "/d").c_str()), 0);
  EXPECT_TRUE(events.waitFor({root + "/d/"}));
}

}  // namespace
