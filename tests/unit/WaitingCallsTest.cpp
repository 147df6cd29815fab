#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "platform/linux/process/guard/WaitingCalls.h"

namespace {

constexpr std::size_t callSize = WaitingCalls::callSize;

TEST(WaitingCalls, AClientMayHaveSoManyCallsAndNoMore) {
  WaitingCalls calls({.callsOfClient = 2, .bytesOfClient = 1'000'000, .bytes = 1'000'000});
  const auto first = calls.enter(":1.1", 0);
  EXPECT_TRUE(first);
  auto second = calls.enter(":1.1", 0);
  EXPECT_TRUE(second);
  EXPECT_FALSE(calls.enter(":1.1", 0));
  EXPECT_TRUE(calls.enter(":1.2", 0)) << "another one may";
  second.reset();
  EXPECT_TRUE(calls.enter(":1.1", 0)) << "there is one less";
}

TEST(WaitingCalls, AClientMayHaveSoManyBytesAndNoMore) {
  WaitingCalls calls({.callsOfClient = 100, .bytesOfClient = 10'000, .bytes = 1'000'000});
  const auto first = calls.enter(":1.1", 5'000);
  EXPECT_TRUE(first);
  EXPECT_FALSE(calls.enter(":1.1", 5'001 - 2 * callSize));
  EXPECT_TRUE(calls.enter(":1.1", 5'000 - 2 * callSize));
}

TEST(WaitingCalls, AllTogetherMayHaveSoManyBytesAndNoMore) {
  WaitingCalls calls({.callsOfClient = 100, .bytesOfClient = 10'000, .bytes = 15'000});
  auto first = calls.enter(":1.1", 10'000 - callSize);
  EXPECT_TRUE(first);
  EXPECT_FALSE(calls.enter(":1.2", 5'001 - callSize));
  EXPECT_TRUE(calls.enter(":1.2", 5'000 - callSize));
  first.reset();
  EXPECT_TRUE(calls.enter(":1.2", 10'000 - callSize));
}

TEST(WaitingCalls, ACallThatIsRefusedCountsForNothing) {
  WaitingCalls calls({.callsOfClient = 100, .bytesOfClient = 10'000, .bytes = 10'000});
  for (int i = 0; i < 1'000; ++i) {
    EXPECT_FALSE(calls.enter(":1.1", 10'001));
  }
  EXPECT_TRUE(calls.enter(":1.1", 10'000 - callSize));
}

TEST(WaitingCalls, APlaceThatIsMovedCountsOnce) {
  WaitingCalls calls({.callsOfClient = 1, .bytesOfClient = 10'000, .bytes = 10'000});
  {
    auto place = calls.enter(":1.1", 0);
    ASSERT_TRUE(place);
    const WaitingCalls::Place moved(*std::move(place));
    place.reset();
    EXPECT_FALSE(calls.enter(":1.1", 0));
  }
  EXPECT_TRUE(calls.enter(":1.1", 0));
}

TEST(WaitingCalls, AFileManagersBurstIsFarFromTheLimits) {
  WaitingCalls calls;
  std::vector<WaitingCalls::Place> places;
  for (int i = 0; i < 10'000; ++i) {
    auto place = calls.enter(":1.1", 1'000);
    ASSERT_TRUE(place) << i;
    places.push_back(*std::move(place));
  }
}

TEST(WaitingCalls, AreCountedByAllThreadsTogether) {
  WaitingCalls calls({.callsOfClient = 1, .bytesOfClient = 10'000, .bytes = 10'000});
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&calls] {
      for (int j = 0; j < 1'000; ++j) {
        calls.enter(":1.1", 0);
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_TRUE(calls.enter(":1.1", 10'000 - callSize)) << "all have left";
}

}  // namespace
