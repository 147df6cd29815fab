// More changes than can be followed one by one: the badges end right, memory stays bounded, and the
// extension answers meanwhile.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "platform/FileURL.h"
#include "tests/system/LiveStormFixture.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::Pair;

namespace {

using LiveStorm = LiveStormFixture;

std::size_t setting(const char *path) {
  std::size_t value = 0;
  std::ifstream(path) >> value;
  return value;
}

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

}  // namespace
