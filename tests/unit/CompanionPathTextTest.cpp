#include <gtest/gtest.h>

#include "companion/PathText.h"

using namespace companion;

TEST(PathText, EscapesWhatWouldBreakALineOrAField) {
  EXPECT_EQ(escapedPath("a\tb\nc\\d\re"), "a\\tb\\nc\\\\d\\re");
}

TEST(PathText, EscapesOtherControlBytesAsThreeOctalDigits) {
  EXPECT_EQ(escapedPath("\x01"
                        "7\x1b[31m\x7f"),
            "\\0017\\033[31m\\177");
}

TEST(PathText, PassesSpacesAndAllBytesAboveASCIIThrough) {
  EXPECT_EQ(escapedPath("größe 日本 \xff\x80"), "größe 日本 \xff\x80");
}

TEST(PathText, RemovesTrailingSlashesButNotTheRoot) {
  EXPECT_EQ(withoutTrailingSlashes("a/b//"), "a/b");
  EXPECT_EQ(withoutTrailingSlashes("///"), "/");
  EXPECT_EQ(withoutTrailingSlashes(""), "");
}

TEST(PathText, JoinsWithExactlyOneSlash) {
  EXPECT_EQ(joinedPath("a", "b/c"), "a/b/c");
  EXPECT_EQ(joinedPath("/", "b"), "/b");
  EXPECT_EQ(joinedPath("a", ""), "a");
}

TEST(PathText, DoesNotTakeANeighbourWithTheSameBeginningForAChild) {
  EXPECT_TRUE(isAtOrBelow("/a/wc", "/a/wc"));
  EXPECT_TRUE(isAtOrBelow("/a/wc/x", "/a/wc"));
  EXPECT_TRUE(isAtOrBelow("/a", "/"));
  EXPECT_FALSE(isAtOrBelow("/a/wc2", "/a/wc"));
  EXPECT_FALSE(isAtOrBelow("/a", "/a/wc"));
}
