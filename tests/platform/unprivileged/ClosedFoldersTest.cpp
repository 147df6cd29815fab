// Watching folders that may not be read. The launcher of this program sees to it that modes bind.
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/events/ReportedEvents.h"

namespace fs = std::filesystem;

namespace {

class ClosedFolders : public ::testing::Test {
 protected:
  ClosedFolders() { writeFile(root + "/d/inner/f", ""); }

  // The folder is opened again, so that it can be removed.
  ~ClosedFolders() override {
    for (const std::string &folder : {root, root + "/d"}) {
      chmod(folder.c_str(), 0700);
    }
  }

  void expectWatchedOnceOpen(const std::string &folder, mode_t mode) const {
    ASSERT_EQ(chmod(folder.c_str(), mode), 0);
    ReportedEvents events({root});
    ASSERT_TRUE(events.waitFor({root}));
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
    events.waitUntilAllIsReported(root);
    writeFile(root + "/d/inner/f", "x");
    EXPECT_TRUE(events.waitFor({root + "/d/inner/f"}));
  }

  TemporaryDirectory directory;
  const std::string root = directory / "root";
};

TEST_F(ClosedFolders, AFolderThatMayNotBeReadIsWatchedOnceItMay) {
  expectWatchedOnceOpen(root + "/d", 0000);
}

TEST_F(ClosedFolders, AFolderThatMayBeListedAndNotEnteredIsWatchedOnceItMay) {
  expectWatchedOnceOpen(root + "/d", 0400);
}

TEST_F(ClosedFolders, ARootThatMayNotBeReadIsWatchedOnceItMay) {
  ASSERT_EQ(chmod(root.c_str(), 0000), 0);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  events.clear();
  ASSERT_EQ(chmod(root.c_str(), 0700), 0);
  ASSERT_TRUE(events.waitFor({root}));
  writeFile(root + "/d/inner/f", "x");
  EXPECT_TRUE(events.waitFor({root + "/d/inner/f"}));
}

}  // namespace
