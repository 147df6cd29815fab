#include <future>
#include <gtest/gtest.h>
#include <vector>

#include "platform/linux/MainContextQueues.h"
#include "tests/support/bus/PrivateBus.h"

using platform::MainContextQueues;
using platform::Queue;
using namespace std::chrono_literals;

namespace {

// Returns once all that was handed over before has run.
void drain(Queue &queue) {
  std::promise<void> reached;
  queue.async([&reached] { reached.set_value(); });
  reached.get_future().wait();
}

bool turnUntilTime(gint64 monotonicTime) {
  return turnMainLoopUntil([=] { return g_get_monotonic_time() > monotonicTime; });
}

}  // namespace

TEST(SerialQueue, RunsBlocksInTheOrderInWhichTheyWereHandedOver) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::vector<int> order;
  for (int i = 0; i < 1000; ++i) {
    queue->async([&order, i] { order.push_back(i); });
  }
  drain(*queue);
  std::vector<int> expected(1000);
  for (int i = 0; i < 1000; ++i) {
    expected[static_cast<std::size_t>(i)] = i;
  }
  EXPECT_EQ(order, expected);
}

TEST(SerialQueue, RunsOneBlockAtATimeOnOneThread) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::vector<std::thread> callers;
  std::vector<std::thread::id> ranOn;  // without a lock: the queue is the lock
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&queue, &ranOn] {
      for (int i = 0; i < 250; ++i) {
        queue->async([&ranOn] { ranOn.push_back(std::this_thread::get_id()); });
      }
    });
  }
  for (std::thread &caller : callers) {
    caller.join();
  }
  drain(*queue);
  ASSERT_EQ(ranOn.size(), 1000U);
  for (const std::thread::id &thread : ranOn) {
    EXPECT_EQ(thread, ranOn.front());
  }
  EXPECT_NE(ranOn.front(), std::this_thread::get_id());
}

TEST(SerialQueue, TwoQueuesDoNotWaitForEachOther) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> first = queues.makeSerialQueue("first");
  const std::shared_ptr<Queue> second = queues.makeSerialQueue("second");
  std::promise<void> secondRan;
  first->async([&] { secondRan.get_future().wait(); });
  second->async([&] { secondRan.set_value(); });
  drain(*first);
}

TEST(SerialQueue, ADelayedBlockRunsNotBeforeItsTime) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::promise<gint64> ran;
  const gint64 start = g_get_monotonic_time();
  queue->asyncAfter(3ms, [&] { ran.set_value(g_get_monotonic_time()); });
  EXPECT_GE(ran.get_future().get() - start, 3000);
}

TEST(SerialQueue, DelayedBlocksRunInTheOrderOfTheirTimes) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::vector<std::string> order;
  queue->asyncAfter(2h, [&] { order.emplace_back("in two hours"); });
  std::promise<void> ran;
  queue->asyncAfter(1ms, [&] {
    order.emplace_back("in a millisecond");
    ran.set_value();
  });
  queue->async([&] { order.emplace_back("at once"); });
  ran.get_future().wait();
  EXPECT_EQ(order, (std::vector<std::string>{"at once", "in a millisecond"}));
}

TEST(SerialQueue, DelayedBlocksThatABusyQueueFindsDueTogetherRunInTheOrderOfTheirTimes) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::promise<void> gate;
  std::vector<int> order;
  queue->async([&] { gate.get_future().wait(); });
  for (const int delay : {3, 1, 2, 1}) {
    queue->asyncAfter(std::chrono::milliseconds(delay),
                      [&order, delay] { order.push_back(delay); });
  }
  ASSERT_TRUE(turnUntilTime(g_get_monotonic_time() + 4000));
  gate.set_value();
  drain(*queue);
  EXPECT_EQ(order, (std::vector<int>{1, 1, 2, 3}));
}

TEST(SerialQueue, WhenDestroyedItRunsWhatIsDueAndForgetsWhatIsDelayed) {
  MainContextQueues queues;
  std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::promise<void> gate;
  int ran = 0;
  bool delayedRan = false;
  auto heldByDelayed = std::make_shared<int>(1);
  const std::weak_ptr<int> held = heldByDelayed;
  queue->async([&] { gate.get_future().wait(); });
  queue->asyncAfter(1h, [&delayedRan, object = std::move(heldByDelayed)] { delayedRan = true; });
  for (int i = 0; i < 100; ++i) {
    queue->async([&] { ++ran; });
  }
  gate.set_value();
  queue.reset();
  EXPECT_EQ(ran, 100);
  EXPECT_FALSE(delayedRan);
  EXPECT_TRUE(held.expired());
}

TEST(SerialQueue, MayBeDestroyedByItsOwnBlock) {
  MainContextQueues queues;
  std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  const std::weak_ptr<Queue> watched = queue;
  std::promise<void> gate;
  std::promise<bool> gone;
  std::promise<void> last;
  Queue &remembered = *queue;
  remembered.async([&gate, &gone, watched, own = std::move(queue)]() mutable {
    gate.get_future().wait();
    own.reset();
    gone.set_value(watched.expired());
  });
  watched.lock()->async([&last] { last.set_value(); });
  gate.set_value();
  EXPECT_TRUE(gone.get_future().get());
  last.get_future().wait();  // what was due has run all the same
}

TEST(SerialQueue, KnowsItsOwnThread) {
  MainContextQueues queues;
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::promise<void> passed;
  queue->async([&] {
    queue->assertIsCurrent();
    passed.set_value();
  });
  passed.get_future().wait();
}

TEST(SerialQueueDeathTest, AssertIsCurrentEndsTheProcessElsewhere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        MainContextQueues queues;
        queues.makeSerialQueue("test")->assertIsCurrent();
      },
      "");
  EXPECT_DEATH(
      {
        MainContextQueues queues;
        const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
        queue->async([&queues] { queues.mainQueue().assertIsCurrent(); });
        drain(*queue);
      },
      "");
}

TEST(MainQueue, RunsOnTheThreadThatTurnsTheMainLoopAndOnlyThen) {
  MainContextQueues queues;
  Queue &mainQueue = queues.mainQueue();
  mainQueue.assertIsCurrent();
  const std::shared_ptr<Queue> queue = queues.makeSerialQueue("test");
  std::thread::id ranOn;
  queue->async([&] { mainQueue.async([&] { ranOn = std::this_thread::get_id(); }); });
  drain(*queue);
  EXPECT_EQ(ranOn, std::thread::id());
  EXPECT_TRUE(turnMainLoopUntil([&] { return ranOn == std::this_thread::get_id(); }));
}

TEST(MainQueue, KeepsTheOrderAndTheDelays) {
  MainContextQueues queues;
  std::vector<int> order;
  queues.mainQueue().asyncAfter(2ms, [&] { order.push_back(3); });
  queues.mainQueue().async([&] { order.push_back(1); });
  queues.mainQueue().async([&] { order.push_back(2); });
  EXPECT_TRUE(order.empty());
  ASSERT_TRUE(turnMainLoopUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(MainQueue, WhatIsOnItComesBeforeAMessageFromTheBusThatWasThereFirst) {
  const PrivateBus bus;
  const auto connection = bus.connect();
  const auto sender = bus.connect();
  MainContextQueues queues;
  std::vector<std::string> order;
  const guint subscription = g_dbus_connection_signal_subscribe(
      connection.get(), nullptr, "org.example.Test", "Next", nullptr, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *,
         gpointer data) { static_cast<std::vector<std::string> *>(data)->emplace_back("signal"); },
      &order, nullptr);
  // The bus answers each client in order, so an answer says that all before it has arrived.
  const auto exchangeWithBus = [](GDBusConnection *client) {
    const platform::VariantHandle reply(g_dbus_connection_call_sync(
        client, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId",
        nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    return reply != nullptr;
  };
  ASSERT_TRUE(exchangeWithBus(connection.get()));
  ASSERT_TRUE(g_dbus_connection_emit_signal(sender.get(), nullptr, "/org/example",
                                            "org.example.Test", "Next", nullptr, nullptr));
  ASSERT_TRUE(exchangeWithBus(sender.get()));
  ASSERT_TRUE(exchangeWithBus(connection.get()));

  queues.mainQueue().async([&] {
    order.emplace_back("block");
    queues.mainQueue().async([&] { order.emplace_back("block of a block"); });
  });
  EXPECT_TRUE(turnMainLoopUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<std::string>{"block", "block of a block", "signal"}));
  g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}
