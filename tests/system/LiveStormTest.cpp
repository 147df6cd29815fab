// More changes than can be followed one by one: the badges end right, memory stays bounded, and the
// extension answers meanwhile.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>

#include "platform/FileURL.h"
#include "platform/linux/events/WatchLimit.h"
#include "tests/system/LiveFixture.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::Pair;

namespace {

// What one may have with 100,000 badges in the map; far below what 300,000 events take. (Sanitizers
// take memory of their own.)
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

// An extension whose log goes to a file, started by what `launcher` says.
ExtensionSession::Setup loggingSetup(const std::string &launcher = "") {
  ExtensionSession::Setup setup;
  setup.extensionCommand = launcher + " /bin/sh -c 'exec \"$0\" 2>> \"$XDG_DATA_HOME\"/log' '" +
                           ExtensionSession::extensionProgram() + "'";
  return setup;
}

std::size_t setting(const char *path) {
  std::size_t value = 0;
  std::ifstream(path) >> value;
  return value;
}

class LiveStorm : public LiveFixture {
 protected:
  explicit LiveStorm(const std::string &launcher = "") : LiveFixture(loggingSetup(launcher)) {
    fs::create_directories(session / "data");
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
    if (std::string(HALVERN_SANITIZERS).empty()) {
      EXPECT_LT(greatestMemoryOfProcess(session.extensionProcess()), greatestMemory);
    }
  }

  std::size_t logLineCount(const std::string &text) const {
    std::ifstream log(session / "data/log");
    std::size_t count = 0;
    for (std::string line; std::getline(log, line);) {
      count += line.find(text) == std::string::npos ? 0 : 1;
    }
    return count;
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
  constexpr std::size_t needed = 25'000;
  if (platform::currentWatchLimit().share() < needed) {
    GTEST_SKIP() << "NOT RUN: fewer than " << needed << " folders can be watched here";
  }
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
  const std::size_t kept = setting("/proc/sys/fs/inotify/max_queued_events");
  const WorkingCopy second = wc.checkOutAgain("second");
  ASSERT_EQ(session.halvern({"add", second.path()}).status, 0);
  listAndWatch();
  EXPECT_EQ(wrongBadges(), "");
  const pid_t extension = session.extensionProcess();
  kill(extension, SIGSTOP);
  for (std::size_t i = 0; i <= kept / 2; ++i) {
    std::ofstream(wc / ("scratch" + std::to_string(i))) << i;
    fs::remove(wc / ("scratch" + std::to_string(i)));
  }
  wc.addFile("new/deep/file.txt", "text\n");
  writeFile(wc / "folder/deeper/file.txt", "edited\n");
  writeFile(wc / "unversioned/file.txt", "");
  BusClient observer(session.bus());
  kill(extension, SIGCONT);
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_THAT(client.badgeByPath(), Contains(Pair(wc / "folder/deeper/file.txt", "modified")));
  expectLiveFile("new/deep/file.txt");
  EXPECT_EQ(logLineCount("lost"), 1U) << "the queue has not overflowed";
  EXPECT_THAT(observer.changed,
              Contains(Pair(platform::FileURL::fromPath(second.path(), true).text(), "")))
      << "every root counts as changed, those without events too";
  expectBoundedMemory();
}

// The extension may watch 3,000 directories, of which it leaves 1,024 to others.
class LiveStormAtTheLimit : public LiveStorm {
 protected:
  LiveStormAtTheLimit() : LiveStorm("'" WITH_FEW_WATCHES "'") {}
};

TEST_F(LiveStormAtTheLimit, WhatIsWatchedStaysRightAndOneLogLineNamesTheSetting) {
  if (runCommand({WITH_FEW_WATCHES, "sh", "-c", "test -z \"${HALVERN_MANY_WATCHES-}\""}).status !=
      0) {
    GTEST_SKIP() << "NOT RUN: no user namespace with a limit of its own can be had here";
  }
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
