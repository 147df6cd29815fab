// Paths that lead elsewhere by the time an event is read.
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/events/SteppedTrees.h"
#include "tests/support/files/TemporaryDirectory.h"

namespace fs = std::filesystem;
using ::testing::ContainerEq;
using ::testing::Contains;
using ::testing::IsEmpty;

namespace {

class WatchedTrees : public ::testing::Test {
 protected:
  WatchedTrees() {
    fs::create_directories(root);
    fs::create_directories(outside);
  }

  // Touches a file in each folder, and expects those in the tree to be reported and no others.
  void expectEveryFolderIsWatched(SteppedTrees &trees) const {
    trees.settle();
    trees.clear();
    touchEachFolder(outside);
    trees.settle();
    EXPECT_THAT(trees.reported(), IsEmpty());
    const std::set<std::string> expected = touchEachFolder(root);
    trees.settle();
    EXPECT_THAT(trees.reported(), ContainerEq(expected));
    SteppedTrees fresh(root);
    fresh.settle();
    EXPECT_EQ(trees.watchCount(), fresh.watchCount()) << "not what the tree has folders";
  }

  // When the path is reported for the first time from now on.
  static void once(SteppedTrees &trees, const std::string &path, std::function<void()> action) {
    trees.onReport = [&trees, path, action = std::move(action)](const std::string &reported) {
      if (reported == path) {
        const std::function<void()> kept = action;
        trees.onReport = nullptr;
        kept();
      }
    };
  }

  const TemporaryDirectory directory;
  const std::string root = directory / "root";
  const std::string outside = directory / "outside";

 private:
  static std::set<std::string> touchEachFolder(const std::string &top) {
    std::set<std::string> probes = {top + "/probe"};
    for (const auto &entry : fs::recursive_directory_iterator(top)) {
      if (entry.is_directory()) {
        probes.insert(entry.path().string() + "/probe");
      }
    }
    for (const std::string &probe : probes) {
      writeFile(probe, "");
    }
    return probes;
  }
};

TEST_F(WatchedTrees, AFolderIsNotTakenForTheOneThatHasItsPathByNowAndLeavesTheTree) {
  fs::create_directories(root + "/old");
  fs::create_directories(outside + "/arriving");
  SteppedTrees trees(root);
  trees.settle();
  fs::rename(outside + "/arriving", root + "/old/inner");
  fs::rename(root + "/old", root + "/new");
  fs::create_directories(root + "/old/inner");
  once(trees, root + "/new/", [&] { fs::rename(root + "/old", outside + "/gone"); });
  expectEveryFolderIsWatched(trees);
}

TEST_F(WatchedTrees, AFolderIsNotTakenForTheOneThatHasItsPathByNowAndIsRemoved) {
  fs::create_directories(root + "/old");
  SteppedTrees trees(root);
  trees.settle();
  fs::create_directories(root + "/old/inner");
  fs::rename(root + "/old", root + "/new");
  fs::create_directories(root + "/old/inner");
  once(trees, root + "/new/", [&] { fs::remove_all(root + "/old"); });
  expectEveryFolderIsWatched(trees);
}

TEST_F(WatchedTrees, AFolderThatWasAwayWhileSomethingCameIntoItIsListedWhenItIsBack) {
  fs::create_directories(root + "/folder");
  SteppedTrees trees(root);
  trees.settle();
  fs::create_directories(root + "/folder/inner");
  once(trees, root + "/folder/inner/", [&] {
    fs::rename(root + "/folder", root + "/away");
    once(trees, root + "/folder/", [&] { fs::rename(root + "/away", root + "/folder"); });
  });
  expectEveryFolderIsWatched(trees);
}

TEST_F(WatchedTrees, AFolderThatLeftIsNotTakenForThereBecauseItCameToWhatHasThePathByNow) {
  fs::create_directories(root + "/old/inner");
  SteppedTrees trees(root);
  trees.settle();
  fs::rename(root + "/old/inner", outside + "/inner");
  fs::rename(root + "/old", root + "/new");
  fs::create_directories(root + "/old");
  fs::rename(outside + "/inner", root + "/old/inner");
  once(trees, root + "/new/", [&] { fs::rename(root + "/old", outside + "/gone"); });
  expectEveryFolderIsWatched(trees);
}

TEST_F(WatchedTrees, AFolderIsNotTakenForAnotherThatHasItsPathByNowWhereThatMayNotBeWatched) {
  writeFile(outside + "/arriving/file", "");
  const std::uint64_t withoutIt = SteppedTrees(root).watchCount();
  SteppedTrees trees(root, withoutIt + 1);
  trees.settle();
  fs::rename(outside + "/arriving", root + "/old");
  trees.read();
  fs::rename(root + "/old", root + "/new");
  fs::create_directories(root + "/old");
  trees.list();
  trees.settle();
  EXPECT_THAT(trees.reported(), Contains(root + "/new/file"));
}

}  // namespace
