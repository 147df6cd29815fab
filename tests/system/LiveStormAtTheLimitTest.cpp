// A storm of more folders than can be watched.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/system/LiveStormFixture.h"

namespace fs = std::filesystem;

namespace {

// The extension may watch 3,000 directories, of which it leaves 1,024 to others.
class LiveStormAtTheLimit : public LiveStormFixture {
 protected:
  LiveStormAtTheLimit() : LiveStormFixture("'" WITH_FEW_WATCHES "'") {}
};

TEST_F(LiveStormAtTheLimit, WhatIsWatchedStaysRightAndOneLogLineNamesTheSetting) {
  for (int i = 0; i < 1500; ++i) {
    fs::create_directories(wc / ("unversioned/" + std::to_string(i) + "/inner"));
  }
  listAndWatch();
  EXPECT_EQ(logLineCount("raise user.max_inotify_watches"), 1U);
  client.show({wc.path(), wc / "folder/deeper/file.txt"});
  weather([this] {
    for (int i = 1500; i < 2500; ++i) {
      fs::create_directories(wc / ("unversioned/" + std::to_string(i) + "/inner"));
    }
  });
  expectLiveFile("folder/deeper/file.txt");
  EXPECT_EQ(logLineCount("raise user.max_inotify_watches"), 1U);
  expectBoundedMemory();
}

}  // namespace
