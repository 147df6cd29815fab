#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace fs = std::filesystem;
using platform::DirectoryEntry;
using platform::FileURL;
using platform::LinuxFileManager;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

using TimePoint = platform::Clock::TimePoint;

class DirectoryContents : public ::testing::Test {
 protected:
  std::map<std::string, std::optional<TimePoint>> contents() {
    std::map<std::string, std::optional<TimePoint>> entries;
    const auto note = [this, &entries](const DirectoryEntry &entry) {
      EXPECT_TRUE(entries.emplace(directory / entry.name, entry.contentModificationDate).second)
          << entry.name << " comes twice";
      return true;
    };
    EXPECT_TRUE(fileManager.visitContentsOfDirectory(url(directory.path()), note));
    return entries;
  }

  static FileURL url(const std::string &path) { return FileURL::fromPath(path, true); }

  bool canBeVisited(const std::string &path) {
    int visits = 0;
    const platform::Outcome outcome =
        fileManager.visitContentsOfDirectory(url(path), [&visits](const auto &) {
          ++visits;
          return true;
        });
    EXPECT_TRUE(outcome || visits == 0);
    return static_cast<bool>(outcome);
  }

  void date(const std::string &name, timespec time) const {
    const timespec times[] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, (directory / name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }

  const TemporaryDirectory directory;
  LinuxFileManager fileManager;
};

TEST_F(DirectoryContents, AreAllEntriesHiddenOnesIncludedAndNothingBeneath) {
  writeFile(directory / "file", "");
  writeFile(directory / ".hidden", "");
  writeFile(directory / "...", "");
  writeFile(directory / "folder/inner", "");
  writeFile(directory / "no \xFF text", "");
  EXPECT_THAT(contents(), UnorderedElementsAre(Key(directory / "file"), Key(directory / ".hidden"),
                                               Key(directory / "..."), Key(directory / "folder"),
                                               Key(directory / "no \xFF text")));
}

TEST_F(DirectoryContents, OfAnEmptyDirectoryAreNone) {
  EXPECT_THAT(contents(), IsEmpty());
}

TEST_F(DirectoryContents, HaveTheirDatesToTheNanosecond) {
  writeFile(directory / "file", "");
  date("file", {1'000'000'000, 123'456'789});
  EXPECT_EQ(contents().at(directory / "file"),
            TimePoint(std::chrono::nanoseconds(1'000'000'000'123'456'789)));
  date("file", {-5, 250'000'000});
  EXPECT_EQ(contents().at(directory / "file"), TimePoint(std::chrono::milliseconds(-4'750)));
}

TEST_F(DirectoryContents, OfALinkHaveTheDateOfTheLinkItself) {
  writeFile(directory / "target/file", "");
  fs::create_symlink("target/file", directory / "link");
  fs::create_symlink("nowhere", directory / "dangling");
  date("target/file", {1, 0});
  date("link", {2, 0});
  date("dangling", {3, 0});
  EXPECT_EQ(contents().at(directory / "link"), TimePoint(std::chrono::seconds(2)));
  EXPECT_EQ(contents().at(directory / "dangling"), TimePoint(std::chrono::seconds(3)));
}

TEST_F(DirectoryContents, OfOtherKindsAreNotOpened) {
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  date("fifo", {7, 0});
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, {}};
  const std::string path = directory / "socket";
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
  EXPECT_THAT(contents(), SizeIs(2)) << "and nothing hangs";
  EXPECT_EQ(contents().at(directory / "fifo"), TimePoint(std::chrono::seconds(7)));
  EXPECT_EQ(accept4(descriptor, nullptr, nullptr, SOCK_NONBLOCK), -1);
  close(descriptor);
}

TEST_F(DirectoryContents, OfWhatIsNoDirectoryCannotBeVisited) {
  writeFile(directory / "file", "");
  fs::create_directory(directory / "folder");
  writeFile(directory / "folder/inner", "");
  fs::create_directory_symlink("folder", directory / "link");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  EXPECT_FALSE(canBeVisited(directory / "missing"));
  EXPECT_FALSE(canBeVisited(directory / "file"));
  EXPECT_FALSE(canBeVisited(directory / "link"));
  EXPECT_FALSE(canBeVisited(directory / "fifo"));
  EXPECT_TRUE(canBeVisited(directory / "folder"));
  fs::create_directory_symlink(".", directory / "on the way");
  EXPECT_TRUE(canBeVisited(directory / "on the way/folder"));
}

TEST_F(DirectoryContents, AreNotVisitedFurtherThanTheVisitorWants) {
  for (int i = 0; i < 10; ++i) {
    writeFile(directory / std::to_string(i), "");
  }
  int visits = 0;
  EXPECT_TRUE(fileManager.visitContentsOfDirectory(
      url(directory.path()), [&visits](const auto &) { return ++visits < 3; }));
  EXPECT_EQ(visits, 3);
}

TEST_F(DirectoryContents, AreAllSeenWhileTheyAreRemoved) {
  constexpr int count = 20'000;
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(mknod((directory / std::to_string(i)).c_str(), S_IFREG | 0600, 0), 0);
  }
  int visits = 0;
  EXPECT_TRUE(fileManager.visitContentsOfDirectory(
      url(directory.path()), [this, &visits](const DirectoryEntry &entry) {
        ++visits;
        EXPECT_TRUE(fileManager.removeItem(FileURL::fromPath(directory / entry.name)));
        return true;
      }));
  EXPECT_EQ(visits, count);
  EXPECT_TRUE(fs::is_empty(directory.path()));
}

}  // namespace
