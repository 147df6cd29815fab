#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "filemanagers/client/PathTree.h"

using filemanagers::areAllInside;
using filemanagers::folderOf;
using filemanagers::isBelow;
using filemanagers::outermostOf;

namespace {

using Folders = std::set<std::string, std::less<>>;

// Counts how often it is searched.
struct CountingFolders {
  Folders folders;
  mutable int searchCount = 0;

  Folders::const_iterator find(std::string_view path) const {
    ++searchCount;
    return folders.find(path);
  }
  bool contains(std::string_view path) const { return find(path) != folders.end(); }
  Folders::const_iterator end() const { return folders.end(); }
};

std::string outermost(const Folders &folders, std::string_view path) {
  const auto found = outermostOf(folders, path);
  return found == folders.end() ? "none" : *found;
}

TEST(PathTree, AnItemsFolderHoldsIt) {
  EXPECT_EQ(folderOf("/a/b/c"), "/a/b");
  EXPECT_EQ(folderOf("/a"), "/");
  EXPECT_EQ(folderOf("/"), "/");
}

TEST(PathTree, BelowAFolderIsAllThatItHoldsButNotItself) {
  EXPECT_TRUE(isBelow("/a/b", "/a"));
  EXPECT_TRUE(isBelow("/a/b/c", "/a"));
  EXPECT_FALSE(isBelow("/a", "/a"));
  EXPECT_FALSE(isBelow("/ab", "/a"));
  EXPECT_FALSE(isBelow("/a.txt", "/a"));
  EXPECT_FALSE(isBelow("/a", "/a/b"));
}

TEST(PathTree, BelowTheFileSystemsRootIsAllButItself) {
  EXPECT_TRUE(isBelow("/a", "/"));
  EXPECT_TRUE(isBelow("/a/b", "/"));
  EXPECT_FALSE(isBelow("/", "/"));
}

TEST(PathTree, TheOutermostFolderIsTheItemOrHoldsIt) {
  const Folders folders = {"/a", "/a/b", "/c"};
  EXPECT_EQ(outermost(folders, "/a"), "/a");
  EXPECT_EQ(outermost(folders, "/a/b/c"), "/a");
  EXPECT_EQ(outermost(folders, "/c/d"), "/c");
  EXPECT_EQ(outermost(folders, "/"), "none");
  EXPECT_EQ(outermost(folders, "/ab"), "none");
  EXPECT_EQ(outermost({"/", "/a"}, "/a/b"), "/");
  EXPECT_EQ(outermost({"/"}, "/"), "/");
}

TEST(PathTree, WhatIsNoAbsolutePathIsInNoFolder) {
  const Folders folders = {"/", "/a"};
  EXPECT_EQ(outermost(folders, ""), "none");
  EXPECT_EQ(outermost(folders, "a"), "none");
  EXPECT_EQ(outermost(folders, "a/b"), "none");
}

TEST(PathTree, AreAllInsideOnlyIfNoneIsOutside) {
  const Folders folders = {"/a", "/c"};
  EXPECT_TRUE(areAllInside({}, folders));
  EXPECT_TRUE(areAllInside({"/a/b", "/a/d", "/c/e/f", "/a"}, folders));
  EXPECT_FALSE(areAllInside({"/a/b", "/b"}, folders));
  EXPECT_FALSE(areAllInside({"/a", "/b"}, folders)) << "their folder is outside";
  EXPECT_FALSE(areAllInside({"/a/b", ""}, folders));
}

TEST(PathTree, TenThousandItemsOfAFolderAreLookedUpOnce) {
  std::vector<std::string> paths;
  for (int i = 0; i < 10'000; ++i) {
    paths.push_back("/a/folder/" + std::to_string(i));
  }
  const CountingFolders one{{"/a"}};
  EXPECT_TRUE(areAllInside({paths.front()}, one));
  const CountingFolders all{{"/a"}};
  EXPECT_TRUE(areAllInside(paths, all));
  EXPECT_EQ(all.searchCount, one.searchCount);
}

}  // namespace
