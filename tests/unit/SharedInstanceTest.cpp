#include <atomic>
#include <thread>

#include "tests/unit/RegistryFixture.h"

using ::testing::ElementsAre;

namespace {

TEST(SharedWorkingCopies, ConcurrentFirstCallsMakeOneRegistry) {
  std::atomic<bool> go{false};
  std::vector<KTRFinderSyncWorkingCopies *> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (auto &slot : seen) {
    threads.emplace_back([&slot, &go] {
      while (!go) {
      }
      slot = &KTRFinderSyncWorkingCopies::sharedWorkingCopies();
    });
  }
  go = true;
  for (std::thread &thread : threads) {
    thread.join();
  }
  for (const auto *registry : seen) {
    EXPECT_EQ(registry, seen.front());
  }
  const FakePlatform &fakes = platform::testing::processPlatform();
  EXPECT_THAT(fakes.journal.callsBeginningWith("observe"),
              ElementsAre("observe com.morvane.finderSync.manifestUpdated"));
}

using RegistryThreads = RegistryFixture;

TEST_F(RegistryThreads, TheRootSetMayBeReadWhileReloadsReplaceIt) {
  fakes.bookmarks.paths["app"] = "/wc";
  std::atomic<bool> stop{false};
  std::thread reader([this, &stop] {
    while (!stop) {
      EXPECT_LE(registry.resolvedRootURLs().size(), 1U);
      peer.rootPathContaining("/wc/x");
    }
  });
  for (int i = 0; i < 200; ++i) {
    publish(i, i % 2 == 0 ? Array{entry("A", "app")} : Array{});
    registry.reloadManifest();
  }
  stop = true;
  reader.join();
}

TEST_F(RegistryThreads, TheRootSetCallbackMayBeReplacedWhileItIsRead) {
  std::atomic<bool> stop{false};
  std::thread reader([this, &stop] {
    while (!stop) {
      if (const auto callback = registry.rootURLsDidChange()) {
        callback({});
      }
    }
  });
  std::atomic<int> calls{0};
  for (int i = 0; i < 1000; ++i) {
    registry.setRootURLsDidChange([&calls](const FileURLSet &) { ++calls; });
  }
  stop = true;
  reader.join();
  EXPECT_TRUE(registry.rootURLsDidChange());
}

}  // namespace
