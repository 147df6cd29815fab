#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/files/TreeRemoval.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds ample = std::chrono::minutes(5);

class TreeRemoval : public ::testing::Test {
 protected:
  bool remove(std::string_view name, std::chrono::milliseconds patience = ample) const {
    return static_cast<bool>(platform::removeTree(directory / name, patience));
  }

  bool isThere(std::string_view name) const {
    return fs::exists(fs::symlink_status(directory / name));
  }

  // The given date, which nothing that happens now has.
  void makeOld(std::string_view name) const {
    const timespec times[] = {{1'000, 0}, {1'000, 5}};
    ASSERT_EQ(utimensat(AT_FDCWD, (directory / name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  bool isOld(std::string_view name) const {
    struct stat status {};
    EXPECT_EQ(stat((directory / name).c_str(), &status), 0);
    return status.st_mtim.tv_sec == 1'000 && status.st_mtim.tv_nsec == 5;
  }

  // "name/d/d/…" of that many levels in all.
  std::string makeNest(const std::string &name, int levels) const {
    std::string path = name;
    for (int i = 1; i < levels; ++i) {
      path += "/d";
    }
    fs::create_directories(directory / path);
    return path;
  }

  const TemporaryDirectory directory;
};

TEST_F(TreeRemoval, TakesAnEntryOfAnyKind) {
  writeFile(directory / "file", "contents");
  fs::create_directory(directory / "empty");
  writeFile(directory / "folder/inner/file", "");
  writeFile(directory / "folder/.hidden", "");
  writeFile(directory / "no \xFF text", "");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  for (const char *name : {"file", "empty", "folder", "no \xFF text", "fifo"}) {
    EXPECT_TRUE(remove(name)) << name;
    EXPECT_FALSE(isThere(name)) << name;
  }
}

TEST_F(TreeRemoval, FailsForWhatIsNotThere) {
  EXPECT_FALSE(remove("missing"));
  EXPECT_FALSE(remove("missing/inner"));
}

TEST_F(TreeRemoval, TakesALinkAndNotItsTarget) {
  writeFile(directory / "outside/file", "contents");
  fs::create_symlink("outside/file", directory / "to a file");
  fs::create_symlink("outside", directory / "to a folder");
  fs::create_symlink("nowhere", directory / "dangling");
  for (const char *name : {"to a file", "to a folder", "dangling"}) {
    EXPECT_TRUE(remove(name)) << name;
    EXPECT_FALSE(isThere(name)) << name;
  }
  EXPECT_EQ(readFileForTest(directory / "outside/file"), "contents");
}

TEST_F(TreeRemoval, LeavesWhatLinksInATreeLeadTo) {
  writeFile(directory / "outside/file", "contents");
  fs::create_directories(directory / "tree/inner");
  fs::create_symlink(directory / "outside", directory / "tree/to a folder");
  fs::create_symlink("../../outside", directory / "tree/inner/to a folder");
  fs::create_symlink("..", directory / "tree/inner/up");
  fs::create_hard_link(directory / "outside/file", directory / "tree/same file");
  EXPECT_TRUE(remove("tree"));
  EXPECT_FALSE(isThere("tree"));
  EXPECT_EQ(readFileForTest(directory / "outside/file"), "contents");
}

TEST_F(TreeRemoval, GoesDownALongWayAndNoFurther) {
  makeNest("deep", 250);
  EXPECT_TRUE(remove("deep"));
  EXPECT_FALSE(isThere("deep"));

  const std::string bottom = makeNest("too deep", 300);
  writeFile(directory / "too deep/file", "");
  makeOld("too deep");
  EXPECT_FALSE(remove("too deep"));
  EXPECT_TRUE(isThere(bottom));
  EXPECT_TRUE(isOld("too deep"));
}

TEST_F(TreeRemoval, WithoutPatienceLeavesEverythingAsItWas) {
  writeFile(directory / "folder/file", "");
  makeOld("folder");
  EXPECT_FALSE(remove("folder", std::chrono::milliseconds(-1)));
  EXPECT_TRUE(isThere("folder/file"));
  EXPECT_TRUE(isOld("folder"));
}

TEST_F(TreeRemoval, ThatIsGivenUpKeepsTheDatesAndGoesOnWithTheNextCall) {
  constexpr int count = 20'000;
  for (int i = 0; i < count; ++i) {
    const std::string name = i % 2 == 0 ? "tree/" : "tree/inner/";
    fs::create_directories(directory / name);
    ASSERT_EQ(mknod((directory / (name + std::to_string(i))).c_str(), S_IFREG | 0600, 0), 0);
  }
  makeOld("tree/inner");
  makeOld("tree");
  int failures = 0;
  while (!remove("tree", std::chrono::milliseconds(1))) {
    ASSERT_LT(++failures, count);
    EXPECT_TRUE(isOld("tree"));
    if (isThere("tree/inner")) {
      EXPECT_TRUE(isOld("tree/inner"));
    }
  }
  EXPECT_GT(failures, 0) << "nothing was given up";
  EXPECT_FALSE(isThere("tree"));
}

}  // namespace
