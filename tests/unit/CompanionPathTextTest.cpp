#include <gtest/gtest.h>

#include "companion/PathText.h"

using namespace companion;

TEST(PathText, AFieldEscapesWhatWouldBreakALineOrAFieldAndNothingElse) {
  EXPECT_EQ(fieldOfPath("a\tb\nc\\d\re\x1b[31m"), "a\\tb\\nc\\\\d\re\x1b[31m");
}

TEST(PathText, WhatIsDisplayedEscapesOtherControlBytesAsThreeOctalDigits) {
  EXPECT_EQ(displayedPath("\x01"
                          "7\t\x1b[31m\x7f"),
            "\\0017\\t\\033[31m\\177");
}

TEST(PathText, WhatIsDisplayedEscapesControlCharactersOfTwoBytesToo) {
  EXPECT_EQ(displayedPath("a\u009b31m \u0080\u009f\u00a0"),
            "a\\302\\23331m \\302\\200\\302\\237\u00a0");
}

TEST(PathText, BecomesOneLineWithoutControlCharacters) {
  EXPECT_EQ(oneLine("  a\r\n\t b  c\x1b\x7f\n"), "a b c");
  EXPECT_EQ(oneLine("a\xc2\x85z\xc2\x9f"), "a z");
  EXPECT_EQ(oneLine("größe\xc2\xa0\xc2"), "größe\xc2\xa0\xc2");
  EXPECT_EQ(oneLine(" \n"), "");
  EXPECT_EQ(oneLine(""), "");
}

TEST(PathText, SpacesAndAllBytesAboveASCIIPassThrough) {
  EXPECT_EQ(fieldOfPath("größe 日本 \xff\x80"), "größe 日本 \xff\x80");
  EXPECT_EQ(displayedPath("größe 日本 \xff\x80"), "größe 日本 \xff\x80");
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

TEST(PathText, TellsAFolderFromWhatIsBelowIt) {
  const std::vector<std::string> folders = {"/a/wc", "/b"};
  EXPECT_TRUE(isAtOrBelowOneOf("/b", folders));
  EXPECT_TRUE(isAtOrBelowOneOf("/b/x", folders));
  EXPECT_FALSE(isAtOrBelowOneOf("/a", folders));
  EXPECT_FALSE(isBelowOneOf("/b", folders));
  EXPECT_TRUE(isBelowOneOf("/b/x", folders));
  EXPECT_FALSE(isBelowOneOf("/b2", folders));
}
