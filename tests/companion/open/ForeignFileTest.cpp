// A command file of another user. The launcher of this program gives it mounts of its own.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include "companion/open/CommandFile.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace {

const std::string identifier = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";

// Makes the file another user's. Where this user may not do that, it becomes one of the system's.
void giveAway(const std::string &path) {
  if (chown(path.c_str(), 65534, 65534) != 0) {
    ASSERT_EQ(mount("/etc/passwd", path.c_str(), nullptr, MS_BIND, nullptr), 0);
  }
}

}  // namespace

TEST(ForeignCommandFile, IsRefusedAndLeftAlone) {
  const TemporaryDirectory directory;
  const std::string path = directory / ("Commands/" + identifier + ".plist");
  writeFile(path, "contents");
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  giveAway(path);

  const auto file = companion::CommandFile::open(
      platform::FileURL::fromPath(directory.path().string()), identifier);
  EXPECT_FALSE(file);
  EXPECT_EQ(file.reason(), "the command file cannot be read: it belongs to another user");
  EXPECT_TRUE(std::filesystem::exists(path));
  umount(path.c_str());
}
