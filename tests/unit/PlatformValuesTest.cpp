// The values and rules of the seam that are the same on every system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Paths.h"
#include "platform/testing/RecordingSystemLogs.h"

using platform::lexicallyStandardizedPath;
using ::testing::ElementsAre;

namespace {

TEST(StandardizedPath, ComponentsThatSayNothingAreRemoved) {
  EXPECT_EQ(lexicallyStandardizedPath("/a/./b//c/", ""), "/a/b/c");
  EXPECT_EQ(lexicallyStandardizedPath("//", ""), "/");
  EXPECT_EQ(lexicallyStandardizedPath("/.", ""), "/");
  EXPECT_EQ(lexicallyStandardizedPath("", ""), "");
}

TEST(StandardizedPath, ParentComponentsAreResolvedInAbsolutePathsOnly) {
  EXPECT_EQ(lexicallyStandardizedPath("/a/b/../c", ""), "/a/c");
  EXPECT_EQ(lexicallyStandardizedPath("/../../a", ""), "/a");
  EXPECT_EQ(lexicallyStandardizedPath("a/../b", ""), "a/../b");
}

TEST(StandardizedPath, ALeadingTildeIsExpanded) {
  EXPECT_EQ(lexicallyStandardizedPath("~/wc/", "/home/me"), "/home/me/wc");
  EXPECT_EQ(lexicallyStandardizedPath("~", "/home/me/"), "/home/me");
  EXPECT_EQ(lexicallyStandardizedPath("~", ""), "~");
  EXPECT_EQ(lexicallyStandardizedPath("/a/~", "/home/me"), "/a/~");
}

TEST(ParentOfPath, ThePathLosesItsLastComponent) {
  EXPECT_EQ(platform::parentOfPath("/a/b"), "/a");
  EXPECT_EQ(platform::parentOfPath("/a"), "/");
  EXPECT_EQ(platform::parentOfPath("/"), "/");
}

TEST(SystemLog, ArgumentsFillTheirPlacesAndKeepTheirPrivacy) {
  platform::testing::RecordingSystemLogs logs;
  const auto log = logs.makeLog("subsystem", "category");
  log->write(platform::LogLevel::error, "{} of {} failed",
             {platform::publicArgument("Scan"), platform::privateArgument("/a {} b")});
  log->write(platform::LogLevel::standard, "nothing to fill in", {});
  EXPECT_THAT(logs.lines, ElementsAre("error subsystem category: Scan of [private: /a {} b] failed",
                                      "default subsystem category: nothing to fill in"));
}

TEST(SystemLog, PrivateArgumentsAreMasked) {
  EXPECT_EQ(platform::maskedText({platform::publicArgument("Scan of "),
                                  platform::privateArgument("/secret"),
                                  platform::publicArgument(" failed")}),
            "Scan of <private> failed");
}

}  // namespace
