#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/testing/HandCrankedQueues.h"

using namespace std::chrono_literals;
using platform::testing::HandCrankedQueues;
using ::testing::ElementsAre;

namespace {

TEST(HandCrankedQueues, BlocksRunInTheOrderInWhichTheyWereHandedOver) {
  HandCrankedQueues queues;
  const auto serial = queues.makeSerialQueue("serial");
  std::vector<int> order;
  serial->async([&] {
    order.push_back(1);
    serial->async([&order] { order.push_back(3); });
  });
  queues.mainQueue().async([&order] { order.push_back(2); });
  queues.runUntilIdle();
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(HandCrankedQueues, DelayedBlocksRunWhenTheirTimeHasComeAndNotBefore) {
  HandCrankedQueues queues;
  std::vector<std::string> order;
  queues.mainQueue().asyncAfter(2s, [&order] { order.emplace_back("2 s"); });
  queues.mainQueue().asyncAfter(1s, [&] {
    order.emplace_back("1 s");
    queues.mainQueue().asyncAfter(500ms, [&order] { order.emplace_back("1.5 s"); });
  });
  queues.advance(999ms);
  EXPECT_THAT(order, ElementsAre());
  queues.advance(1s);
  EXPECT_THAT(order, ElementsAre("1 s", "1.5 s"));
  queues.advance(1ms);
  EXPECT_THAT(order, ElementsAre("1 s", "1.5 s", "2 s"));
}

TEST(HandCrankedQueues, TheClockMovesOnlyWithTime) {
  HandCrankedQueues queues;
  const auto start = queues.now();
  queues.runUntilIdle();
  EXPECT_EQ(queues.now(), start);
  queues.advance(3s);
  EXPECT_EQ(queues.now() - start, 3s);
}

TEST(HandCrankedQueuesDeathTest, StateOfAQueueMayNotBeTouchedFromElsewhere) {
  HandCrankedQueues queues;
  const auto serial = queues.makeSerialQueue("serial");
  serial->async([&serial] { serial->assertIsCurrent(); });
  queues.runUntilIdle();
  EXPECT_DEATH(serial->assertIsCurrent(), "");
}

}  // namespace
