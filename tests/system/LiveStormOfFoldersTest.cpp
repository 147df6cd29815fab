// A storm of folders, each of which has to be watched.
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/linux/events/WatchLimit.h"
#include "tests/system/LiveStormFixture.h"

namespace fs = std::filesystem;

namespace {

using LiveStormOfFolders = LiveStormFixture;

TEST_F(LiveStormOfFolders, TwentyThousandNestedFoldersMadeAtFullSpeed) {
  constexpr std::size_t needed = 25'000;
  ASSERT_GE(platform::currentWatchLimit().share(), needed)
      << "fewer folders can be watched than when the build was configured";
  listAndWatch();
  std::string deepest;
  weather([&] {
    for (int i = 0; i < 400; ++i) {
      deepest = "folder/" + std::to_string(i);
      for (int level = 0; level < 50; ++level) {
        deepest += "/d";
      }
      fs::create_directories(wc / deepest);
    }
  });
  EXPECT_EQ(wrongBadges({wc.path(), wc / "folder", wc / "folder/0", wc / "folder/399"}), "");
  wc.addFile(deepest + "/leaf.txt", "text\n");
  EXPECT_EQ(wrongBadges({wc.path(), wc / "folder/399", wc / (deepest + "/leaf.txt")}), "");
  expectLiveFile(deepest + "/leaf.txt");
  expectBoundedMemory();
}

}  // namespace
