#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "filemanagers/qt/QtMainLoop.h"
#include "tests/filemanagers/qt/QtEventLoop.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

TEST(QtMainLoopTest, CallsSoonOnceAndNotWithinTheCall) {
  filemanagers::QtMainLoop loop;
  std::vector<std::string> calls;
  loop.callSoon([&] { calls.emplace_back("first"); });
  loop.callSoon([&] { calls.emplace_back("second"); });
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_TRUE(turnQtLoopUntil([&] { return calls.size() == 2; }));
  bool isLater = false;
  loop.callSoon([&] { isLater = true; });
  EXPECT_TRUE(turnQtLoopUntil([&] { return isLater; }));
  EXPECT_THAT(calls, ElementsAre("first", "second"));
}

TEST(QtMainLoopTest, CallsAfterTheDelay) {
  filemanagers::QtMainLoop loop;
  QElapsedTimer time;
  time.start();
  qint64 calledAfter = -1;
  loop.callAfter(1s, [&] { calledAfter = time.elapsed(); });
  EXPECT_TRUE(turnQtLoopUntil([&] { return calledAfter >= 0; }));
  EXPECT_GE(calledAfter, 500);  // Qt rounds to the nearest full second of the clock
}

TEST(QtMainLoopTest, CallsNothingAfterItsEnd) {
  std::vector<std::string> calls;
  auto ended = std::make_unique<filemanagers::QtMainLoop>();
  ended->callSoon([&] { calls.emplace_back("soon"); });
  ended->callAfter(1s, [&] { calls.emplace_back("after"); });
  ended.reset();
  filemanagers::QtMainLoop other;
  bool isLater = false;
  other.callAfter(2s, [&] { isLater = true; });
  EXPECT_TRUE(turnQtLoopUntil([&] { return isLater; }));
  EXPECT_THAT(calls, IsEmpty());
}

}  // namespace
