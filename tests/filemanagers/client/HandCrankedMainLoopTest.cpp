// The tests' own main loop does only what it is told, else its virtual time proves nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/filemanagers/client/HandCrankedMainLoop.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class HandCrankedMainLoopTest : public ::testing::Test {
 protected:
  std::function<void()> noting(const std::string &name) {
    return [this, name] { calls.push_back(name); };
  }

  filemanagers::testing::HandCrankedMainLoop loop;
  std::vector<std::string> calls;
};

TEST_F(HandCrankedMainLoopTest, CallsNothingByItselfAndEachFunctionOnce) {
  loop.callSoon(noting("soon"));
  loop.callAfter(1s, noting("after"));
  EXPECT_THAT(calls, IsEmpty());
  loop.advance(100s);
  loop.advance(100s);
  EXPECT_THAT(calls, ElementsAre("soon", "after"));
}

TEST_F(HandCrankedMainLoopTest, ATurnLeavesWhatItHandsOverToTheNextOne) {
  loop.callSoon([this] {
    calls.emplace_back("outer");
    loop.callSoon(noting("inner"));
  });
  loop.turn();
  EXPECT_THAT(calls, ElementsAre("outer"));
  EXPECT_EQ(loop.dueCount(), 1U);
  loop.turn();
  EXPECT_THAT(calls, ElementsAre("outer", "inner"));
}

TEST_F(HandCrankedMainLoopTest, CallsAtTheirTimesAndInTheirOrder) {
  loop.callAfter(2s, noting("two"));
  loop.callAfter(1s, [this] {
    calls.emplace_back("one");
    loop.callSoon(noting("soon after one"));
    loop.callAfter(1s, noting("one after one"));
  });
  loop.advance(1s);
  EXPECT_THAT(calls, ElementsAre("one", "soon after one"));
  EXPECT_EQ(loop.timerCount(), 2U);
  loop.advance(1s);
  EXPECT_THAT(calls, ElementsAre("one", "soon after one", "two", "one after one"));
}

TEST_F(HandCrankedMainLoopTest, TimeThatHasPassedInPartsCountsAsAWhole) {
  loop.callAfter(3s, noting("three"));
  loop.advance(2s);
  EXPECT_THAT(calls, IsEmpty());
  loop.advance(1s);
  EXPECT_THAT(calls, ElementsAre("three"));
}

}  // namespace
