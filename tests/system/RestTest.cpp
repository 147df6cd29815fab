// What the extension costs while nothing happens. Not under sanitizers, which have an allocator of
// their own.
#include <gmock/gmock.h>
#include <vector>

#include "platform/FileURL.h"
#include "tests/support/NumberFromEnvironment.h"
#include "tests/support/processes/ProcessFigures.h"
#include "tests/support/processes/ProcessTree.h"
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

  std::size_t wakeUps() {
    const std::vector<pid_t> processes = processesOfExtension(session.extensionProcess());
    EXPECT_EQ(processes.size(), 3U);
    std::size_t count = 0;
    for (const pid_t process : processes) {
      count += wakeUpsOfProcess(process);
    }
    return count;
  }

  std::size_t ownMemory() { return figuresOfProcess(session.extensionProcess()).ownMemory; }
};

TEST_F(AtRest, TheExtensionDoesNotWakeUp) {
  writeFile(wc / "file.txt", "edited\n");
  listAndWatch();
  ASSERT_EQ(wrongBadges(), "");
  turnFor(untilAllIsQuiet);
  const std::size_t before = wakeUps();
  turnFor(std::chrono::seconds(numberFromEnvironment("HALVERN_IDLE_SECONDS", 10)));
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

TEST_F(AtRest, WhatALargeCallHasUsedGoesBackToTheSystemButForOneBuffer) {
  BusClient asker(session.bus());
  asker.directoryURLs();  // starts the extension
  const std::size_t before = ownMemory();
  // 12 MiB, of items that are in no working copy.
  const std::vector<std::string> items(1024, "file:///" + std::string(12'000, 'x'));
  ASSERT_EQ(asker.requestBadges(items), "");
  ASSERT_TRUE(asker.waitForBadges(items.size()));

  // GDBus reads into a buffer that it keeps as it was at its largest.
  constexpr std::size_t expected = 12 * 1024;
  EXPECT_TRUE(turnMainLoopUntil([&] { return ownMemory() < before + expected * 3 / 2; }))
      << ownMemory() - before << " KiB are kept";
}

}  // namespace
