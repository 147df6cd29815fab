#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "filemanagers/glib/GLibMainLoop.h"
#include "tests/support/bus/PrivateBus.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class GLibMainLoopTest : public ::testing::Test {
 protected:
  GLibMainLoopTest() { loop.emplace(); }

  std::function<void()> noting(const std::string &name) {
    return [this, name] { calls.push_back(name); };
  }

  static void turnUntilIdle() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }

  std::vector<std::string> calls;
  std::optional<filemanagers::GLibMainLoop> loop;
};

TEST_F(GLibMainLoopTest, CallsOnceWhenTheContextTurns) {
  loop->callSoon(noting("one"));
  loop->callSoon(noting("two"));
  EXPECT_THAT(calls, IsEmpty());
  turnUntilIdle();
  turnUntilIdle();
  EXPECT_THAT(calls, ElementsAre("one", "two"));
}

TEST_F(GLibMainLoopTest, CallsSoonWhenNothingMoreUrgentIsToBeDone) {
  loop->callSoon(noting("soon"));
  const auto note = [](gpointer data) -> gboolean {
    static_cast<std::vector<std::string> *>(data)->emplace_back("urgent");
    return G_SOURCE_REMOVE;
  };
  g_idle_add_full(G_PRIORITY_DEFAULT, note, &calls, nullptr);
  turnUntilIdle();
  EXPECT_THAT(calls, ElementsAre("urgent", "soon"));
}

TEST_F(GLibMainLoopTest, WhatIsHandedOverByACallIsCalledToo) {
  loop->callSoon([this] { loop->callSoon(noting("inner")); });
  turnUntilIdle();
  EXPECT_THAT(calls, ElementsAre("inner"));
}

TEST_F(GLibMainLoopTest, CallsAfterTheDelayAndNotBefore) {
  const gint64 start = g_get_monotonic_time();
  gint64 end = 0;
  loop->callAfter(1s, [&end] { end = g_get_monotonic_time(); });
  ASSERT_TRUE(turnMainLoopUntil([&end] { return end != 0; }));
  EXPECT_GE(end - start, G_USEC_PER_SEC);
}

TEST_F(GLibMainLoopTest, WithItsEndAllIsForgotten) {
  const auto held = std::make_shared<int>();
  loop->callSoon([this, held] { calls.emplace_back("soon"); });
  loop->callAfter(0s, [this, held] { calls.emplace_back("after"); });
  loop.reset();
  EXPECT_EQ(held.use_count(), 1);
  turnUntilIdle();
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(GLibMainLoopTest, MayBeEndedByWhatItCalls) {
  loop->callSoon([this] { loop.reset(); });
  loop->callSoon(noting("never"));
  turnUntilIdle();
  EXPECT_FALSE(loop.has_value());
  EXPECT_THAT(calls, IsEmpty());
}

}  // namespace
