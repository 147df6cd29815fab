#include <gtest/gtest.h>

#include "platform/linux/files/LinuxPaths.h"
#include "tests/support/EnvironmentVariable.h"

using platform::LinuxPaths;

namespace {

std::string standardized(std::string_view path) {
  return LinuxPaths().standardizedPath(path);
}

}  // namespace

TEST(LinuxPaths, DotsAndRepeatedSlashesAreRemoved) {
  EXPECT_EQ(standardized("/a/./b"), "/a/b");
  EXPECT_EQ(standardized("/./a/."), "/a");
  EXPECT_EQ(standardized("//a///b"), "/a/b");
  EXPECT_EQ(standardized("/a/b/"), "/a/b");
  EXPECT_EQ(standardized("/a/b///"), "/a/b");
  EXPECT_EQ(standardized("/a/.hidden/..."), "/a/.hidden/...");
}

TEST(LinuxPaths, ParentComponentsAreResolvedInAbsolutePaths) {
  EXPECT_EQ(standardized("/a/b/../c"), "/a/c");
  EXPECT_EQ(standardized("/a/b/.."), "/a");
  EXPECT_EQ(standardized("/a/.."), "/");
  EXPECT_EQ(standardized("/../../a"), "/a");
  EXPECT_EQ(standardized("/.."), "/");
}

TEST(LinuxPaths, ParentComponentsStayInRelativePaths) {
  EXPECT_EQ(standardized("a/../b"), "a/../b");
  EXPECT_EQ(standardized("../a/./b/"), "../a/b");
}

TEST(LinuxPaths, TheTopDirectoryStays) {
  EXPECT_EQ(standardized("/"), "/");
  EXPECT_EQ(standardized("///"), "/");
  EXPECT_EQ(standardized("/."), "/");
}

TEST(LinuxPaths, ALeadingTildeIsTheHomeOfTheEnvironment) {
  const EnvironmentVariable home("HOME", "/homes/someone/");
  EXPECT_EQ(standardized("~"), "/homes/someone");
  EXPECT_EQ(standardized("~/a/../b"), "/homes/someone/b");
  EXPECT_EQ(standardized("/~"), "/~");
  EXPECT_EQ(standardized("/a/~/b"), "/a/~/b");
  EXPECT_EQ(standardized("~someone/a"), "~someone/a");
}

TEST(LinuxPaths, ATildeStaysWhereThereIsNoHome) {
  for (const std::optional<std::string> &value :
       {std::optional<std::string>(), std::optional<std::string>(""),
        std::optional<std::string>("relative/home")}) {
    const EnvironmentVariable home("HOME", value);
    EXPECT_EQ(standardized("~"), "~");
    EXPECT_EQ(standardized("~/a"), "~/a");
  }
}

TEST(LinuxPaths, BytesThatAreNotUTF8Stay) {
  EXPECT_EQ(standardized("/a/\xFF\xFE//b"), "/a/\xFF\xFE/b");
}

TEST(LinuxPaths, NamesThatOnlyBeginLikePrivateStay) {
  EXPECT_EQ(standardized("/privateer/a"), "/privateer/a");
  EXPECT_EQ(standardized("/a/private/b"), "/a/private/b");
}
