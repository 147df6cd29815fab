// File systems that are unmounted and mounted again with a working copy that is shown. Mounts are
// seen by this process and those that it starts alone: the launcher of this program sees to that.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/mount.h>

#include "tests/reliability/RunningScan.h"
#include "tests/reliability/WorldFixture.h"

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class MountedWorkingCopy : public WorldFixture {
 protected:
  // The contents of the working copy lie elsewhere, and where it was is an empty folder.
  MountedWorkingCopy() {
    fs::rename(root, contents);
    fs::create_directory(root);
  }
  ~MountedWorkingCopy() override { umount2(root.c_str(), MNT_DETACH); }

  // The contents themselves.
  void mountContents() const {
    ASSERT_EQ(mount(contents.c_str(), root.c_str(), nullptr, MS_BIND, nullptr), 0)
        << strerror(errno);
  }

  // A new file system with a copy of them, as a stick that is plugged in.
  void mountCopy() const {
    ASSERT_EQ(mount("none", root.c_str(), "tmpfs", 0, "mode=755"), 0) << strerror(errno);
    fs::copy(contents, root, fs::copy_options::recursive);
  }

  // Nothing of ours keeps the file system from being unmounted.
  void unmount() const { ASSERT_EQ(umount(root.c_str()), 0) << strerror(errno); }

  const std::string contents = session / "contents";
};

TEST_F(MountedWorkingCopy, ThatIsUnmountedAndMountedAgainIsShownAsItIs) {
  mountContents();
  showAll();
  unmount();
  expectNoBadges();
  writeFile(contents + "/while-away", "");
  mountContents();
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(wc / "while-away"), "unversioned");
}

TEST_F(MountedWorkingCopy, WhoseFileSystemIsAnotherOneAfterwardsIsShownAsItIs) {
  mountCopy();
  showAll();
  unmount();
  expectNoBadges();
  writeFile(contents + "/while-away", "");
  mountCopy();
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(wc / "while-away"), "unversioned");
}

TEST_F(MountedWorkingCopy, ThatIsUnmountedInTheMiddleOfAScanIsShownWhenItIsMountedAgain) {
  mountContents();
  showAll();
  {
    const LockedDatabase lock(root);
    writeFile(wc / "folder/clean", "another size\n");
    ASSERT_GE(waitForScan(extension).scan, 0);
    ASSERT_EQ(umount2(root.c_str(), MNT_DETACH), 0) << strerror(errno);
  }
  expectNoBadges();
  mountContents();
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(wc / "folder/clean"), "modified");
  EXPECT_THAT(session.log(), Not(HasSubstr("The scan hangs")));
}

}  // namespace
