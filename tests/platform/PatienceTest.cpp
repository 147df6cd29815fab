#include <gtest/gtest.h>

#include "platform/linux/Patience.h"

using platform::resultWithin;
using namespace std::chrono_literals;

TEST(Patience, AResultInTimeIsHandedOut) {
  EXPECT_EQ(resultWithin<int>(30s, [] { return 7; }), 7);
}

TEST(Patience, TheWorkRunsOnAThreadOfItsOwn) {
  EXPECT_NE(resultWithin<std::thread::id>(30s, [] { return std::this_thread::get_id(); }),
            std::this_thread::get_id());
}

TEST(Patience, ACallThatBlocksIsGivenUpAndLeftToItself) {
  auto gate = std::make_shared<std::promise<void>>();
  auto ended = std::make_shared<std::promise<void>>();
  const std::optional<int> result = resultWithin<int>(5ms, [gate, ended] {
    gate->get_future().wait();
    ended->set_value();
    return 7;
  });
  EXPECT_EQ(result, std::nullopt);
  gate->set_value();
  ended->get_future().wait();  // the call could end after all, and used only what it owned
}
