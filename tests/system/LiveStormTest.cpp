// More changes than can be followed one by one: the badges end right, memory stays bounded, and the
// extension answers meanwhile.
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>

#include "platform/FileURL.h"
#include "tests/system/LiveFixture.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Pair;

namespace {

#if defined(__SANITIZE_ADDRESS__) || (defined(__has_feature) && __has_feature(address_sanitizer))
constexpr bool isSanitized = true;  // and takes memory of its own
#else
constexpr bool isSanitized = false;
#endif

// What one may have with 100,000 badges in the map; far below what 300,000 events take.
constexpr std::size_t greatestMemory = 160 << 10;  // KiB

std::size_t greatestMemoryOfProcess(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) {
      return std::stoul(line.substr(line.find(':') + 1));
    }
  }
  return 0;
}

class LiveStorm : public LiveFixture {
 protected:
  explicit LiveStorm(const ExtensionSession::Setup &setup = {}) : LiveFixture(setup) {
    wc.addFile("folder/deeper/file.txt", "text\n");
    wc.svn({"update"});
  }

  // Makes the storm, and meanwhile asks for badges as fast as they are answered.
  void weather(const std::function<void()> &storm) {
    BusClient asker(session.bus());
    const std::string url = platform::FileURL::fromPath(wc / "folder/deeper/file.txt").text();
    auto end = std::async(std::launch::async, storm);
    std::size_t asked = 0;
    while (end.wait_for(0s) != std::future_status::ready) {
      ASSERT_EQ(asker.requestBadges({url}), "");
      ASSERT_TRUE(asker.waitForBadges(++asked));
    }
    end.get();
    EXPECT_GT(asked, 0U);
  }

  void expectBoundedMemory() const {
    if (!isSanitized) {
      EXPECT_LT(greatestMemoryOfProcess(session.extensionProcess()), greatestMemory);
    }
  }

  // An edit of the file is still noticed.
  void expectLiveFile(const std::string &name) {
    std::ofstream(wc / name, std::ios::app) << "a further line\n";
    EXPECT_TRUE(client.waitUntil([&] { return client.badgeByPath().contains(wc / name); })) << name;
    EXPECT_EQ(wrongBadges({wc.path(), wc / name}), "");
  }
};

TEST_F(LiveStorm, AHundredThousandFilesMadeRenamedAndRemoved) {
  constexpr int count = 100'000;
  const auto path = [this](const char *prefix, int i) {
    return wc / ("folder/" + std::string(prefix) + std::to_string(i));
  };
  listAndWatch();
  weather([&] {
    for (int i = 0; i < count; ++i) {
      std::ofstream(path("made", i)) << i;
    }
  });
  std::set<std::string> some = {wc.path(), wc / "folder", wc / "folder/deeper/file.txt"};
  for (int i = 0; i < count; i += count / 100) {
    some.insert(path("made", i));
    some.insert(path("renamed", i));
  }
  EXPECT_EQ(wrongBadges(some), "");
  weather([&] {
    for (int i = 0; i < count; ++i) {
      fs::rename(path("made", i), path("renamed", i));
    }
  });
  EXPECT_EQ(wrongBadges(some), "");
  weather([&] {
    for (int i = 0; i < count; ++i) {
      fs::remove(path("renamed", i));
    }
  });
  EXPECT_EQ(wrongBadges(some), "");
  expectBoundedMemory();
  expectLiveFile("folder/deeper/file.txt");
}

TEST_F(LiveStorm, TwentyThousandNestedFoldersMadeAtFullSpeed) {
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

TEST_F(LiveStorm, EventsThatTheKernelLosesWhileTheExtensionIsStopped) {
  listAndWatch();
  EXPECT_EQ(wrongBadges(), "");
  const pid_t extension = session.extensionProcess();
  kill(extension, SIGSTOP);
  // The kernel keeps 16,384 events.
  for (int i = 0; i < 10'000; ++i) {
    std::ofstream(wc / ("scratch" + std::to_string(i))) << i;
    fs::remove(wc / ("scratch" + std::to_string(i)));
  }
  wc.addFile("new/deep/file.txt", "text\n");
  writeFile(wc / "folder/deeper/file.txt", "edited\n");
  writeFile(wc / "unversioned/file.txt", "");
  kill(extension, SIGCONT);
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_THAT(client.badgeByPath(), Contains(Pair(wc / "folder/deeper/file.txt", "modified")));
  expectLiveFile("new/deep/file.txt");
}

// The extension may watch 3,000 directories, of which it leaves 1,024 to others.
class LiveStormAtTheLimit : public LiveStorm {
 protected:
  LiveStormAtTheLimit() : LiveStorm(setup()) {}

  static ExtensionSession::Setup setup() {
    ExtensionSession::Setup setup;
    setup.extensionCommand = "'" WITH_FEW_WATCHES
                             "' /bin/sh -c 'exec \"$0\" 2> \"$XDG_DATA_HOME\"/log' '" +
                             ExtensionSession::extensionProgram() + "'";
    return setup;
  }
};

TEST_F(LiveStormAtTheLimit, WhatIsWatchedStaysRightAndTheLogNamesTheSetting) {
  if (std::system("unshare --user --map-root-user true 2> /dev/null") != 0) {
    GTEST_SKIP() << "NOT RUN: no user namespace with a limit of its own can be had here";
  }
  fs::create_directories(session / "data");
  for (int i = 0; i < 1500; ++i) {
    fs::create_directories(wc / ("unversioned/" + std::to_string(i) + "/inner"));
  }
  listAndWatch();
  EXPECT_THAT(readFileForTest(session / "data/log"), HasSubstr("raise user.max_inotify_watches"));
  client.show({wc.path(), wc / "folder/deeper/file.txt"});
  expectLiveFile("folder/deeper/file.txt");
}

}  // namespace
