// Which folders the extension is told of, and when that ends.
#include "tests/filemanagers/client/ShownItemsFixture.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ShownItemsObservation : public ShownItemsFixture {
 protected:
  ShownItemsObservation() { items.setDirectories({"/wc"}); }

  Strings askedAfter(std::chrono::seconds duration) {
    loop.advance(duration);
    return asked();
  }
};

TEST_F(ShownItemsObservation, BeginsWithTheFirstItemOfAFolderThatIsAskedFor) {
  show({"/wc/a", "/wc/b", "/wc/folder/c"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "beginObserving /wc/folder",
                                   "requestBadges /wc/a, /wc/b, /wc/folder/c"));
  show({"/wc/folder/d"});
  EXPECT_THAT(asked(), ElementsAre("requestBadges /wc/folder/d"));
}

TEST_F(ShownItemsObservation, EndsOnceNothingUnderTheRootIsShownForAWhile) {
  showAnswered({{"/wc/a", ""}, {"/wc/folder/c", ""}});
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(100s), IsEmpty());
  hide({"/wc/folder/c"});
  EXPECT_THAT(askedAfter(4s), IsEmpty());
  EXPECT_THAT(askedAfter(1s), ElementsAre("endObserving /wc", "endObserving /wc/folder"));
  EXPECT_THAT(askedAfter(100s), IsEmpty());
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ShownItemsObservation, TheRootItselfIsUnderTheRoot) {
  showAnswered({{"/wc", ""}, {"/wc/a", ""}});
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(100s), IsEmpty());
  hide({"/wc"});
  EXPECT_THAT(askedAfter(5s), ElementsAre("endObserving /wc"));
}

TEST_F(ShownItemsObservation, WhoeverLeavesAFolderForItsNeighbourEndsNothing) {
  showAnswered({{"/wc/folder/c", ""}});
  hide({"/wc/folder/c"});
  loop.advance(4s);
  show({"/wc/neighbour/d"});
  EXPECT_THAT(askedAfter(100s),
              ElementsAre("beginObserving /wc/neighbour", "requestBadges /wc/neighbour/d"));
}

TEST_F(ShownItemsObservation, EachEmptyMomentMayLastAsLong) {
  showAnswered({{"/wc/a", ""}});
  hide({"/wc/a"});
  loop.advance(3s);
  showAnswered({{"/wc/a", ""}});
  loop.advance(1s);
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(4s), IsEmpty());
  EXPECT_THAT(askedAfter(6s), ElementsAre("endObserving /wc"));
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST_F(ShownItemsObservation, HidingAndShowingOverAndOverTakesOneTimer) {
  for (int i = 0; i < 100; ++i) {
    showAnswered({{"/wc/a", ""}});
    hide({"/wc/a"});
  }
  EXPECT_EQ(loop.timerCount(), 1U);
  EXPECT_THAT(askedAfter(100s), ElementsAre("endObserving /wc"));
}

TEST_F(ShownItemsObservation, BeginsAgainAfterAnEnd) {
  showAnswered({{"/wc/a", ""}});
  hide({"/wc/a"});
  askedAfter(5s);
  show({"/wc/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ShownItemsObservation, RootsEndByThemselves) {
  items.setDirectories({"/wc", "/wc2"});
  showAnswered({{"/wc/a", ""}, {"/wc2/a", ""}});
  hide({"/wc2/a"});
  EXPECT_THAT(askedAfter(100s), ElementsAre("endObserving /wc2"));
}

// Whichever of the two answers for the inner root's items, an end drops what it knows of others.
TEST_F(ShownItemsObservation, WithARootInARootNothingEndsWhileAnythingOfTheOuterIsShown) {
  items.setDirectories({"/wc", "/wc/inner"});
  showAnswered({{"/wc/a", ""}, {"/wc/inner", ""}, {"/wc/inner/b", ""}});
  hide({"/wc/inner", "/wc/inner/b"});
  EXPECT_THAT(askedAfter(100s), IsEmpty());
  show({"/wc/inner/b"});
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(100s), ElementsAre("requestBadges /wc/inner/b"));
  hide({"/wc/inner/b"});
  EXPECT_THAT(askedAfter(100s), ElementsAre("endObserving /wc", "endObserving /wc/inner"));
}

TEST_F(ShownItemsObservation, ARootThatComesAroundAnotherTakesOverItsFolders) {
  showAnswered({{"/wc/a", ""}});
  items.setDirectories({"/", "/wc"});
  show({"/other"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /", "requestBadges /other"));
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(100s), IsEmpty());
  hide({"/other"});
  EXPECT_THAT(askedAfter(100s), ElementsAre("endObserving /", "endObserving /wc"));
}

TEST_F(ShownItemsObservation, WhatLeavesTheDirectoriesIsNotObservedAnyMore) {
  showAnswered({{"/wc/a", ""}});
  items.setDirectories({});
  hide({"/wc/a"});
  EXPECT_THAT(askedAfter(100s), IsEmpty()) << "the extension has dropped it by itself";
  items.setDirectories({"/wc"});
  show({"/wc/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ShownItemsObservation, TheNextProcessIsToldAnew) {
  showAnswered({{"/wc/a", ""}});
  hide({"/wc/a"});
  items.awaitNextExtension();
  EXPECT_THAT(askedAfter(100s), IsEmpty()) << "nobody to tell";
  items.setDirectories({"/wc"});
  show({"/wc/a"});
  EXPECT_THAT(asked(), ElementsAre("beginObserving /wc", "requestBadges /wc/a"));
}

TEST_F(ShownItemsObservation, EndsInADirectoryThatIsAnOuterOneNowAndShowsNothing) {
  items.setDirectories({"/wc", "/wc/inner"});
  showAnswered({{"/wc/a", ""}, {"/wc/inner/x", ""}});
  hide({"/wc/inner/x"});
  askedAfter(100s);
  items.setDirectories({"/wc/inner"});
  EXPECT_THAT(askedAfter(100s), ElementsAre("endObserving /wc/inner"));
}

}  // namespace
