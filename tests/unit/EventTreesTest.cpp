#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/events/DirectoryTrees.h"
#include "platform/linux/events/GatheredPaths.h"
#include "platform/linux/events/OwnFiles.h"
#include "platform/linux/events/WatchLimit.h"

using platform::DirectoryTrees;
using platform::GatheredPaths;
using platform::OwnFiles;
using platform::WatchedDirectory;
using platform::WatchLimit;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

TEST(DirectoryTrees, APathIsThatOfTheRootAndTheNamesBelowIt) {
  DirectoryTrees trees({"/wc", "/"});
  WatchedDirectory &top = trees.insertTop(0, 1);
  WatchedDirectory &child = trees.insertChild(trees.insertChild(top, "a", 2), "b", 3);
  EXPECT_EQ(trees.path(top), "/wc");
  EXPECT_EQ(trees.path(child), "/wc/a/b");
  EXPECT_EQ(trees.path(trees.insertChild(trees.insertTop(1, 4), "usr", 5)), "/usr");
}

TEST(DirectoryTrees, AMovedDirectoryTakesWhatIsInItAlong) {
  DirectoryTrees trees({"/wc"});
  WatchedDirectory &top = trees.insertTop(0, 1);
  WatchedDirectory &a = trees.insertChild(top, "a", 2);
  WatchedDirectory &b = trees.insertChild(top, "b", 3);
  WatchedDirectory &inner = trees.insertChild(a, "inner", 4);
  DirectoryTrees::Detached moved = trees.detach(a);
  EXPECT_FALSE(trees.isAttached(inner));
  EXPECT_EQ(trees.find(0, 4), &inner) << "it is still in the index";
  trees.attach(b, "c", std::move(moved));
  EXPECT_TRUE(trees.isAttached(inner));
  EXPECT_EQ(trees.path(inner), "/wc/b/c/inner");
  EXPECT_EQ(DirectoryTrees::child(top, "a"), nullptr);
}

TEST(DirectoryTrees, DroppingGivesTheWatchesThatNobodyUsesAnyMore) {
  DirectoryTrees trees({"/a", "/link to a"});
  WatchedDirectory &top = trees.insertTop(0, 1);
  WatchedDirectory &child = trees.insertChild(top, "x", 2);
  trees.insertChild(child, "y", 3);
  trees.insertChild(trees.insertTop(1, 1), "x", 2);
  EXPECT_THAT(trees.allWithWatch(2), SizeIs(2));
  EXPECT_THAT(trees.drop(child), ElementsAre(3));
  EXPECT_THAT(trees.drop(top), IsEmpty());
  EXPECT_EQ(trees.top(0), nullptr);
  EXPECT_THAT(trees.drop(*trees.top(1)), UnorderedElementsAre(1, 2));
  EXPECT_EQ(trees.size(), 0U);
}

TEST(DirectoryTrees, ATreeMayBeDeeperThanAnyStack) {
  constexpr int depth = 500'000;
  DirectoryTrees trees({"/wc"});
  WatchedDirectory *directory = &trees.insertTop(0, 0);
  for (int watch = 1; watch < depth; ++watch) {
    directory = &trees.insertChild(*directory, "d", watch);
  }
  int visited = 0;
  DirectoryTrees::visit(*trees.top(0), [&visited](const WatchedDirectory &) { ++visited; });
  EXPECT_EQ(visited, depth);
  EXPECT_EQ(trees.path(*directory).size(), std::string("/wc").size() + 2 * (depth - 1));
  EXPECT_THAT(trees.drop(*trees.top(0)), SizeIs(depth));
  EXPECT_EQ(trees.size(), 0U);
}

TEST(DirectoryTrees, ADirectoryIsAtOrBelowItselfAndWhatItIsIn) {
  DirectoryTrees trees({"/wc"});
  WatchedDirectory &top = trees.insertTop(0, 1);
  WatchedDirectory &a = trees.insertChild(top, "a", 2);
  WatchedDirectory &b = trees.insertChild(top, "b", 3);
  EXPECT_TRUE(DirectoryTrees::isAtOrBelow(a, a));
  EXPECT_TRUE(DirectoryTrees::isAtOrBelow(a, top));
  EXPECT_FALSE(DirectoryTrees::isAtOrBelow(top, a));
  EXPECT_FALSE(DirectoryTrees::isAtOrBelow(a, b));
}

TEST(GatheredPaths, EachPathIsThereOnceInTheOrderOfTheFirstChanges) {
  GatheredPaths paths;
  const GatheredPaths::TimePoint start{};
  EXPECT_TRUE(paths.isEmpty());
  paths.add("/wc", "/wc/b", start);
  paths.add("/wc", "/wc/a", start + 1s);
  paths.add("/wc", "/wc/b", start + 2s);
  EXPECT_EQ(paths.first(), start);
  EXPECT_THAT(paths.take(), ElementsAre("/wc/b", "/wc/a"));
  EXPECT_TRUE(paths.isEmpty());
  paths.add("/wc", "/wc/c", start + 3s);
  EXPECT_EQ(paths.first(), start + 3s);
}

TEST(GatheredPaths, BeyondTheGreatestCountTheRootsAreWhatChanged) {
  GatheredPaths paths;
  for (std::size_t i = 0; i < GatheredPaths::greatestCount + 10; ++i) {
    paths.add("/a", "/a/" + std::to_string(i), {});
  }
  paths.add("/b", "/b/x", {});
  const std::vector<std::string> taken = paths.take();
  ASSERT_THAT(taken, SizeIs(GatheredPaths::greatestCount + 2));
  EXPECT_EQ(taken[GatheredPaths::greatestCount], "/a");
  EXPECT_EQ(taken.back(), "/b");
}

TEST(OwnFiles, AreThoseInTheirDirectoriesAndThoseWhosePathsBeginAlike) {
  const OwnFiles files{{"/h/data/own"}, {"/h/icons/emblem-"}};
  EXPECT_TRUE(files.contains("/h/data/own"));
  EXPECT_TRUE(files.contains("/h/data/own/x/y"));
  EXPECT_TRUE(files.contains("/h/icons/emblem-a.png"));
  EXPECT_FALSE(files.contains("/h/data/owner"));
  EXPECT_FALSE(files.contains("/h/data"));
  EXPECT_FALSE(files.contains("/h/icons/a.png"));
}

TEST(OwnFiles, OnlyThoseBeneathAFolderConcernIt) {
  const OwnFiles files{{"/h/own", "/other"}, {"/h/icons/emblem-"}};
  EXPECT_THAT(files.beneath("/h").directories, ElementsAre("/h/own"));
  EXPECT_THAT(files.beneath("/h").pathPrefixes, SizeIs(1));
  EXPECT_THAT(files.beneath("/").directories, SizeIs(2));
  EXPECT_THAT(files.beneath("/h/wc").directories, IsEmpty());
}

TEST(WatchLimit, TheLastTenthIsLeftToOthersAndAtLeast1024) {
  EXPECT_EQ((WatchLimit{100'000, ""}.share()), 90'000U);
  EXPECT_EQ((WatchLimit{10'240, ""}.share()), 9'216U);
  EXPECT_EQ((WatchLimit{8192, ""}.share()), 7168U);
  EXPECT_EQ((WatchLimit{1024, ""}.share()), 0U);
  EXPECT_EQ((WatchLimit{100, ""}.share()), 0U);
}

}  // namespace
