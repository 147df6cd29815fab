// What depends on a directory in "/" or on a full disk. The launcher of this program gives it a "/"
// of its own, with an empty "/private" and a file system of 64 KiB at "/small".
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/mount.h>
#include <sys/stat.h>

#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/files/TreeRemoval.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/SmallDisk.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Dictionary;
using platform::FileURL;
using platform::LinuxPaths;
using platform::PropertyList;

namespace fs = std::filesystem;

namespace {

std::string standardized(std::string_view path) {
  return LinuxPaths().standardizedPath(path);
}

class PrivateDirectory : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(fs::is_directory("/private")) << "This program runs without its launcher";
    fs::create_directories("/private/halvern/folder");
  }
  void TearDown() override {
    fs::remove_all("/private/halvern");
    fs::remove_all("/halvern");
  }
};

class FullDisk : public testing::Test {
 protected:
  void SetUp() override { requireSmallDisk(); }
  void TearDown() override { emptySmallDisk(); }

  static std::ptrdiff_t entryCount(const std::string &path) {
    return std::distance(fs::directory_iterator(path), {});
  }
};

}  // namespace

TEST_F(PrivateDirectory, TheInitialPrivateIsDroppedWhereBothPathsNameOneItem) {
  fs::create_directory_symlink("private/halvern", "/halvern");
  EXPECT_EQ(standardized("/private/halvern"), "/halvern");
  EXPECT_EQ(standardized("/private/halvern/folder/"), "/halvern/folder");
  EXPECT_EQ(standardized("//private/./halvern//folder"), "/halvern/folder");
  EXPECT_EQ(standardized("/private/x/../halvern/folder"), "/halvern/folder");
}

TEST_F(PrivateDirectory, TheInitialPrivateStaysWhereThePathsNameTwoItems) {
  fs::create_directories("/halvern/folder");
  EXPECT_EQ(standardized("/private/halvern"), "/private/halvern");
  EXPECT_EQ(standardized("/private/halvern/folder"), "/private/halvern/folder");
}

TEST_F(PrivateDirectory, TheInitialPrivateStaysWhereOneOfThePathsNamesNothing) {
  EXPECT_EQ(standardized("/private/halvern/folder"), "/private/halvern/folder");
  EXPECT_EQ(standardized("/private/halvern/missing"), "/private/halvern/missing");
  fs::create_directory_symlink("private/halvern", "/halvern");
  EXPECT_EQ(standardized("/private/halvern/missing"), "/private/halvern/missing");
}

TEST_F(PrivateDirectory, TheDirectoryItselfAndOthersThatBeginLikeItStay) {
  EXPECT_EQ(standardized("/private"), "/private");
  EXPECT_EQ(standardized("/private/"), "/private");
  EXPECT_EQ(standardized("/privateer"), "/privateer");
  fs::create_directories("/halvern/private/halvern");
  EXPECT_EQ(standardized("/halvern/private/halvern"), "/halvern/private/halvern");
}

class MountInATree : public testing::Test {
 protected:
  void expectItsContentsStay() const {
    EXPECT_FALSE(platform::removeTree(directory / "tree", std::chrono::minutes(1)));
    EXPECT_EQ(readFileForTest(directory / "tree/mount/file"), "contents");
    EXPECT_FALSE(platform::removeTree(directory / "tree/mount", std::chrono::minutes(1)));
    EXPECT_EQ(readFileForTest(directory / "tree/mount/file"), "contents");
    ASSERT_EQ(umount2((directory / "tree/mount").c_str(), MNT_DETACH), 0);
    EXPECT_TRUE(platform::removeTree(directory / "tree", std::chrono::minutes(1)));
  }

  const TemporaryDirectory directory;
};

TEST_F(MountInATree, OfAnotherFileSystemIsNotEmptiedWithTheTree) {
  fs::create_directories(directory / "tree/mount");
  ASSERT_EQ(mount("none", (directory / "tree/mount").c_str(), "tmpfs", 0, nullptr), 0);
  writeFile(directory / "tree/mount/file", "contents");
  expectItsContentsStay();
}

TEST_F(MountInATree, OfTheSameFileSystemIsNotEmptiedWithTheTree) {
  fs::create_directories(directory / "tree/mount");
  writeFile(directory / "elsewhere/file", "contents");
  ASSERT_EQ(mount((directory / "elsewhere").c_str(), (directory / "tree/mount").c_str(), nullptr,
                  MS_BIND, nullptr),
            0);
  expectItsContentsStay();
  EXPECT_EQ(readFileForTest(directory / "elsewhere/file"), "contents");
}

// The file system of "/small" keeps dates that most do not.
TEST_F(FullDisk, DatesThatTheClockCannotCountAreItsEnds) {
  constexpr time_t thousandsOfYears = 1LL << 40;  // seconds
  for (const auto &[name, seconds] :
       {std::pair{"past", -thousandsOfYears}, std::pair{"future", thousandsOfYears}}) {
    const std::string path = std::string("/small/") + name;
    writeFile(path, "");
    const timespec dates[] = {{seconds, 0}, {seconds, 999'999'999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), dates, 0), 0);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    ASSERT_EQ(status.st_mtim.tv_sec, seconds);
  }
  using TimePoint = platform::Clock::TimePoint;
  std::map<std::string, TimePoint> dates;
  ASSERT_TRUE(platform::LinuxFileManager().visitContentsOfDirectory(
      FileURL::fromPath("/small", true), [&dates](const platform::DirectoryEntry &entry) {
        dates["/small/" + entry.name] = entry.contentModificationDate.value();
        return true;
      }));
  EXPECT_LT(dates.at("/small/past"), TimePoint::min() + std::chrono::seconds(3));
  EXPECT_GT(dates.at("/small/future"), TimePoint::max() - std::chrono::seconds(3));
}

TEST_F(FullDisk, TheOldFileStaysAndNothingIsLeftBeside) {
  ASSERT_TRUE(platform::replaceFile("/small/file", "old"));
  fillSmallDisk();
  EXPECT_FALSE(platform::replaceFile("/small/file", std::string(8192, 'n')));
  EXPECT_FALSE(platform::replaceFile("/small/another", std::string(8192, 'n')));
  EXPECT_EQ(readFileForTest("/small/file"), "old");
  EXPECT_EQ(entryCount("/small"), 2);
}

TEST_F(FullDisk, AFileThatFitsOnlyInPartIsNotWritten) {
  ASSERT_TRUE(platform::replaceFile("/small/file", "old"));
  EXPECT_FALSE(platform::replaceFile("/small/file", std::string(100'000, 'n')));
  EXPECT_EQ(readFileForTest("/small/file"), "old");
  EXPECT_EQ(entryCount("/small"), 1);
}

TEST_F(FullDisk, AnOldPropertyListStays) {
  platform::LinuxPropertyListFiles files;
  const FileURL url = FileURL::fromPath("/small/list.plist");
  ASSERT_TRUE(files.writeDictionary({{"key", "old"}}, url));
  fillSmallDisk();
  EXPECT_FALSE(files.writeDictionary({{"key", std::string(8192, 'n')}}, url));
  const auto list = files.dictionaryWithContentsOfURL(url);
  ASSERT_TRUE(list);
  EXPECT_TRUE(*list == (Dictionary{{"key", "old"}}));
}

TEST_F(FullDisk, OldUserDefaultsStay) {
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", "/small");
  platform::LinuxUserDefaults defaults("com.example.test");
  defaults.setObject("old", "key");
  fillSmallDisk();
  defaults.setObject(std::string(8192, 'n'), "key");
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("old"));
  EXPECT_EQ(entryCount("/small/com.example.test"), 1);
}
