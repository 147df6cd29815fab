// What the extension costs while nothing happens. Not under sanitizers, which have an allocator of
// their own.
#include <cstdlib>
#include <gmock/gmock.h>
#include <sstream>
#include <vector>

#include "platform/FileURL.h"
#include "tests/support/ProcessFigures.h"
#include "tests/system/LiveFixture.h"

using namespace std::chrono_literals;

namespace {

// Longer than coalescing and the quiet period together take, and than the extension waits before it
// gives memory back.
constexpr auto untilAllIsQuiet = 6s;

class AtRest : public LiveFixture {
 protected:
  AtRest() {
    wc.addFile("file.txt", "text\n");
    wc.svn({"update"});
  }

  // Of the extension, the process beside it that starts programs, and the status worker.
  std::size_t wakeUps() {
    std::size_t count = 0;
    std::vector<pid_t> processes = {session.extensionProcess()};
    for (std::size_t i = 0; i < processes.size(); ++i) {
      count += wakeUpsOfProcess(processes[i]);
      const std::string number = std::to_string(processes[i]);
      std::istringstream children(
          readFileForTest("/proc/" + number + "/task/" + number + "/children"));
      for (pid_t child = -1; children >> child;) {
        processes.push_back(child);
      }
    }
    EXPECT_EQ(processes.size(), 3U);
    return count;
  }

  std::size_t ownMemory() { return figuresOfProcess(session.extensionProcess()).ownMemory; }
};

TEST_F(AtRest, TheExtensionDoesNotWakeUp) {
  writeFile(wc / "file.txt", "edited\n");
  listAndWatch();
  ASSERT_EQ(wrongBadges(), "");
  turnFor(untilAllIsQuiet);
  const char *seconds = std::getenv("HALVERN_IDLE_SECONDS");
  const std::size_t before = wakeUps();
  turnFor(std::chrono::seconds(seconds == nullptr ? 10 : std::atoi(seconds)));
  EXPECT_EQ(wakeUps() - before, 0U);
  EXPECT_EQ(wrongBadges(), "");
}

TEST_F(AtRest, WhatAScanHasUsedGoesBackToTheSystem) {
  for (int i = 0; i < 50'000; ++i) {
    writeFile(wc / ("unversioned/" + std::to_string(i)), "");
  }
  wc.svn({"add", "--quiet", "unversioned"});
  BusClient asker(session.bus());
  asker.directoryURLs();  // starts the extension
  const std::size_t before = ownMemory();
  listAndWatch();
  const std::string item = platform::FileURL::fromPath(wc / "unversioned/0").text();
  ASSERT_EQ(asker.requestBadges({item}), "");
  ASSERT_TRUE(asker.waitForBadges(1));
  const std::size_t used = ownMemory() - before;
  EXPECT_GT(used, 4096U) << "the test shows nothing";

  ASSERT_EQ(asker.call("EndObservingDirectory", g_variant_new("(s)", item.c_str())), "");
  EXPECT_TRUE(turnMainLoopUntil([&] { return ownMemory() < before + used / 2; }))
      << ownMemory() - before << " KiB of " << used << " are kept";
}

}  // namespace
