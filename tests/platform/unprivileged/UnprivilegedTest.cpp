// What depends on file modes. The launcher of this program sees to it that they bind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/files/AtomicFile.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/LinuxPosixAccess.h"
#include "platform/linux/process/BadgeIcons.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "platform/testing/RasterDrawing.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::LinuxPosixAccess;
using platform::PropertyList;
using platform::Result;

namespace {

constexpr mode_t closedToAll = 0000;
constexpr mode_t listOnly = 0400;
constexpr mode_t listableOnly = 0400;
constexpr mode_t readOnly = 0500;
constexpr mode_t open = 0700;

// A mode for the life of the object, so that the temporary directory can be removed afterwards.
class Mode {
 public:
  Mode(std::string path, mode_t mode) : path_(std::move(path)) {
    EXPECT_EQ(chmod(path_.c_str(), mode), 0);
  }
  ~Mode() { chmod(path_.c_str(), open); }
  Mode(const Mode &) = delete;
  Mode &operator=(const Mode &) = delete;

 private:
  const std::string path_;
};

class UnprivilegedUser : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(geteuid(), 0U) << "File modes do not bind this user"; }

  std::ptrdiff_t entryCount(const std::string &path) const {
    return std::distance(std::filesystem::directory_iterator(path), {});
  }

  const TemporaryDirectory directory;
};

}  // namespace

TEST_F(UnprivilegedUser, AccessFollowsTheModes) {
  const std::string path = directory / "folder";
  std::filesystem::create_directory(path);
  LinuxPosixAccess access;
  constexpr int read = LinuxPosixAccess::readable;
  constexpr int write = LinuxPosixAccess::writable;
  constexpr int search = LinuxPosixAccess::searchable;
  {
    const Mode mode(path, readOnly);
    EXPECT_EQ(access.access(path, read | search), 0);
    EXPECT_EQ(access.access(path, write), EACCES);
    EXPECT_EQ(access.access(path, read | write | search), EACCES);
  }
  {
    const Mode mode(path, listOnly);
    EXPECT_EQ(access.access(path, read), 0);
    EXPECT_EQ(access.access(path, search), EACCES);
    EXPECT_EQ(access.access(path + "/anything", read), EACCES);
  }
  const Mode mode(path, closedToAll);
  EXPECT_EQ(access.access(path, read), EACCES);
}

TEST_F(UnprivilegedUser, AFileInAReadOnlyDirectoryStaysTheOldOne) {
  const std::string folder = directory / "folder";
  const std::string path = folder + "/file";
  writeFile(path, "old");
  {
    const Mode mode(folder, readOnly);
    EXPECT_FALSE(platform::replaceFile(path, "new"));
    EXPECT_FALSE(platform::replaceFile(folder + "/another", "new"));
  }
  EXPECT_EQ(readFileForTest(path), "old");
  EXPECT_EQ(entryCount(folder), 1);
}

TEST_F(UnprivilegedUser, AReadOnlyFileIsReplacedAllTheSame) {
  const std::string path = directory / "file";
  writeFile(path, "old");
  const Mode mode(path, 0400);
  EXPECT_TRUE(platform::replaceFile(path, "new"));
  EXPECT_EQ(readFileForTest(path), "new");
}

TEST_F(UnprivilegedUser, AnUnreadableListSaysWhy) {
  const std::string path = directory / "list.plist";
  const FileURL url = FileURL::fromPath(path);
  platform::LinuxPropertyListFiles files;
  ASSERT_TRUE(files.writeDictionary({{"key", 1}}, url));
  const Mode mode(path, closedToAll);
  const Result<Dictionary> list = files.dictionaryWithContentsOfURL(url);
  ASSERT_FALSE(list);
  EXPECT_EQ(list.reason(), g_strerror(EACCES));
}

TEST_F(UnprivilegedUser, UnreadableUserDefaultsArePutAsideAndNotLost) {
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", directory.path());
  const std::string path = directory / "com.example.test/defaults.plist";
  platform::LinuxUserDefaults defaults("com.example.test");
  defaults.setObject("old", "other key");
  const std::string before = readFileForTest(path);
  ASSERT_EQ(chmod(path.c_str(), closedToAll), 0);

  EXPECT_EQ(defaults.objectForKey("other key"), std::nullopt);
  defaults.setObject("new", "key");

  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("new"));
  const Mode mode(path + ".unreadable", open);
  EXPECT_EQ(readFileForTest(path + ".unreadable"), before);
}

TEST_F(UnprivilegedUser, UserDefaultsInAReadOnlyDirectoryStay) {
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", directory.path());
  platform::LinuxUserDefaults defaults("com.example.test");
  defaults.setObject("old", "key");
  {
    const Mode mode(directory / "com.example.test", readOnly);
    defaults.setObject("new", "key");
  }
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("old"));
  EXPECT_EQ(entryCount(directory / "com.example.test"), 1);
}

TEST_F(UnprivilegedUser, DamagedUserDefaultsInAReadOnlyDirectoryStay) {
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", directory.path());
  const std::string path = directory / "com.example.test/defaults.plist";
  writeFile(path, "garbage");
  platform::LinuxUserDefaults defaults("com.example.test");
  {
    const Mode mode(directory / "com.example.test", readOnly);
    defaults.setObject("new", "key");
  }
  EXPECT_EQ(readFileForTest(path), "garbage");
}

TEST_F(UnprivilegedUser, ADirectoryThatCannotBeCreatedIsAFailure) {
  const Mode mode(directory.path(), readOnly);
  EXPECT_FALSE(platform::LinuxFileManager().createDirectoryWithIntermediates(
      FileURL::fromPath(directory / "a/b")));
}

TEST_F(UnprivilegedUser, AClosedDirectoryCannotBeVisitedAndIsNotRemoved) {
  const std::string folder = directory / "tree/closed";
  writeFile(folder + "/file", "contents");
  platform::LinuxFileManager fileManager;
  {
    const Mode mode(folder, closedToAll);
    EXPECT_FALSE(fileManager.visitContentsOfDirectory(FileURL::fromPath(folder, true),
                                                      [](const auto &) { return true; }));
    EXPECT_FALSE(fileManager.removeItem(FileURL::fromPath(directory / "tree")));
  }
  EXPECT_EQ(readFileForTest(folder + "/file"), "contents");
}

TEST_F(UnprivilegedUser, TheDatesInADirectoryThatMayOnlyBeListedAreNotKnown) {
  writeFile(directory / "folder/file", "");
  const Mode mode(directory / "folder", listableOnly);
  std::vector<std::string> names;
  EXPECT_TRUE(platform::LinuxFileManager().visitContentsOfDirectory(
      FileURL::fromPath(directory / "folder", true), [&names](const auto &entry) {
        names.push_back(entry.name);
        EXPECT_EQ(entry.contentModificationDate, std::nullopt);
        return true;
      }));
  EXPECT_EQ(names, std::vector<std::string>{"file"});
}

TEST_F(UnprivilegedUser, AnEmptyDirectoryIsRemovedAlsoWhereItMayNotBeRead) {
  std::filesystem::create_directories(directory / "tree/closed");
  std::filesystem::permissions(directory / "tree/closed", std::filesystem::perms::none);
  EXPECT_TRUE(platform::LinuxFileManager().removeItem(FileURL::fromPath(directory / "tree")));
  EXPECT_FALSE(std::filesystem::exists(directory / "tree"));
}

TEST_F(UnprivilegedUser, AReadOnlyDirectoryKeepsItsContentsAndNotWhatIsBesideIt) {
  const std::string folder = directory / "tree/read-only";
  writeFile(folder + "/file", "contents");
  writeFile(directory / "tree/beside", "");
  writeFile(directory / "tree/other/file", "");
  platform::LinuxFileManager fileManager;
  {
    const Mode mode(folder, readOnly);
    EXPECT_FALSE(fileManager.removeItem(FileURL::fromPath(directory / "tree")));
  }
  EXPECT_EQ(readFileForTest(folder + "/file"), "contents");
  EXPECT_EQ(entryCount(directory / "tree"), 1);
  EXPECT_TRUE(fileManager.removeItem(FileURL::fromPath(directory / "tree")));
}

TEST_F(UnprivilegedUser, AnIconForAReadOnlyHomeIsNotWritten) {
  const EnvironmentVariable data("XDG_DATA_HOME", directory.path());
  const platform::Image image =
      platform::testing::imageOfRaster(platform::testing::uniformRaster(16, 16));
  {
    const Mode mode(directory.path(), readOnly);
    writeBadgeIcon(image, "added");
    EXPECT_EQ(entryCount(directory.path()), 0);
  }
  writeBadgeIcon(image, "added");
  EXPECT_EQ(entryCount(directory.path()), 1);
}

TEST_F(UnprivilegedUser, ABookmarkThroughAClosedFolderFailsWithTheReason) {
  const std::string path = directory / "folder/wc";
  std::filesystem::create_directories(path);
  platform::LinuxBookmarks bookmarks;
  const FileURL url = FileURL::fromPath(path, /*isDirectory=*/true);
  const Result<Data> data =
      bookmarks.bookmarkDataForURL(url, platform::BookmarkCreationOptions::none);
  ASSERT_TRUE(data);

  const Mode mode(directory / "folder", closedToAll);
  const auto resolved =
      bookmarks.resolveBookmarkData(*data, platform::BookmarkResolutionOptions::none);
  ASSERT_FALSE(resolved);
  EXPECT_EQ(resolved.reason(), g_strerror(EACCES));
  const Result<Data> again =
      bookmarks.bookmarkDataForURL(url, platform::BookmarkCreationOptions::none);
  ASSERT_FALSE(again);
  EXPECT_EQ(again.reason(), g_strerror(EACCES));
}

TEST_F(UnprivilegedUser, ARenamedWorkingCopyInAFolderThatCannotBeListedIsNotFound) {
  const std::string path = directory / "folder/wc";
  std::filesystem::create_directories(path);
  platform::LinuxBookmarks bookmarks;
  const Result<Data> data = bookmarks.bookmarkDataForURL(FileURL::fromPath(path, true),
                                                         platform::BookmarkCreationOptions::none);
  ASSERT_TRUE(data);
  std::filesystem::rename(path, directory / "folder/renamed");

  const Mode mode(directory / "folder", 0300);
  const auto resolved =
      bookmarks.resolveBookmarkData(*data, platform::BookmarkResolutionOptions::none);
  ASSERT_FALSE(resolved);
  EXPECT_EQ(resolved.reason(), g_strerror(ENOENT));
}
