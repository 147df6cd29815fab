// What changes by itself: badges, and the directories.
#include "tests/filemanagers/client/ShownItemsFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

class ShownItemsChanges : public ShownItemsFixture {
 protected:
  ShownItemsChanges() { items.setDirectories({"/wc"}); }
};

TEST_F(ShownItemsChanges, AChangeThatNamesAnItemIsDrawnAndNothingIsAsked) {
  showAnswered({{"/wc/a", "modified"}, {"/wc/b", ""}});
  items.takeChanges({{"/wc/not shown", "added"}, {"/wc/a", "added"}});
  EXPECT_EQ(items.show("/wc/a"), "added");
  EXPECT_THAT(redrawn(), ElementsAre("/wc/a"));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsChanges, AChangeThatNamesARootAsksForAllBeneathItButItself) {
  showAnswered({{"/wc", ""}, {"/wc/a", ""}, {"/wc/folder/b", ""}});
  items.takeChanges({{"/wc", "modified"}, {"/wc/a", "modified"}});
  EXPECT_THAT(redrawn(), ElementsAre("/wc", "/wc/a"));
  EXPECT_THAT(requested(), UnorderedElementsAre("/wc/a", "/wc/folder/b"));
}

TEST_F(ShownItemsChanges, AChangeThatNamesAFolderThatIsNoRootAsksForNothing) {
  showAnswered({{"/wc/folder", ""}, {"/wc/folder/b", ""}});
  items.takeChanges({{"/wc/folder", "modified"}});
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsChanges, AChangeOfOneRootAsksForNothingOfAnother) {
  items.setDirectories({"/wc", "/wc2"});
  showAnswered({{"/wc/a", ""}, {"/wc2/a", ""}});
  items.takeChanges({{"/wc", ""}});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsChanges, AChangeOfARootIsOneOfTheRootsInsideItToo) {
  items.setDirectories({"/wc", "/wc/inner"});
  showAnswered({{"/wc/a", ""}, {"/wc/inner", ""}, {"/wc/inner/b", ""}});
  items.takeChanges({{"/wc/inner", ""}});
  EXPECT_THAT(requested(), ElementsAre("/wc/inner/b"));
  items.takeAnswers({{"/wc/inner/b", ""}});
  items.takeChanges({{"/wc", ""}});
  EXPECT_THAT(requested(), UnorderedElementsAre("/wc/a", "/wc/inner", "/wc/inner/b"));
}

TEST_F(ShownItemsChanges, TwoChangesOfARootInOneTurnAskOnce) {
  showAnswered({{"/wc/a", ""}});
  items.takeChanges({{"/wc", ""}});
  items.takeChanges({{"/wc", ""}});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsChanges, AnAnswerThatMayBeFromBeforeTheChangeOfARootIsDrawnAndAskedForAgain) {
  show({"/wc/a"});
  asked();
  items.takeChanges({{"/wc", ""}});
  EXPECT_THAT(asked(), IsEmpty()) << "not twice at the same time";
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(items.show("/wc/a"), "modified");
  EXPECT_FALSE(items.isSettled());
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
  items.takeAnswers({{"/wc/a", ""}});
  EXPECT_TRUE(items.isSettled());
  EXPECT_THAT(asked(), IsEmpty());
}

// A change and an answer may pass each other on their way.
TEST_F(ShownItemsChanges, AnItemThatIsNamedWhileItsQuestionIsUnderWayIsAskedForAgain) {
  show({"/wc"});
  asked();
  items.takeChanges({{"/wc", "modified"}});
  items.takeAnswers({{"/wc", ""}});
  EXPECT_FALSE(items.isSettled());
  EXPECT_THAT(asked(), ElementsAre("requestBadges /wc"));
  items.takeAnswers({{"/wc", "modified"}});
  EXPECT_EQ(items.show("/wc"), "modified");
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsChanges, AChangeBeforeTheQuestionIsSentAsksOnce) {
  show({"/wc/a"});
  items.takeChanges({{"/wc", ""}, {"/wc/a", "modified"}});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_TRUE(items.isSettled());
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ShownItemsChanges, ChangesAndAnswersOutsideOfTheDirectoriesAreDropped) {
  show({"/outside"});
  items.takeChanges({{"/outside", "modified"}});
  items.takeAnswers({{"/outside", "modified"}});
  EXPECT_EQ(items.show("/outside"), "");
  EXPECT_THAT(redrawn(), IsEmpty());
}

TEST_F(ShownItemsChanges, WhatComesInsideIsAskedForAndWhatGoesOutsideIsCleared) {
  show({"/other/c"});
  showAnswered({{"/wc", "modified"}, {"/wc/a", "modified"}, {"/wc/b", ""}});
  items.setDirectories({"/other"});
  EXPECT_THAT(redrawn(), UnorderedElementsAre("/wc", "/wc/a"));
  EXPECT_EQ(items.show("/wc/a"), "");
  EXPECT_THAT(requested(), ElementsAre("/other/c"));
  items.takeAnswers({{"/other/c", ""}});
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsChanges, WhatStaysInsideIsNotAskedForAgain) {
  showAnswered({{"/wc/a", "modified"}});
  items.setDirectories({"/other", "/wc"});
  items.setDirectories({"/wc"});
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_THAT(redrawn(), IsEmpty());
}

TEST_F(ShownItemsChanges, WhatGoesOutsideBeforeItIsAskedForIsNotAskedFor) {
  show({"/wc/a"});
  items.setDirectories({});
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsChanges, WhatGoesOutsideAndComesBackInOneTurnIsAskedForOnce) {
  show({"/wc/a"});
  items.setDirectories({});
  items.setDirectories({"/wc"});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

TEST_F(ShownItemsChanges, AnAnswerAfterTheItemWentOutsideIsNotDrawn) {
  show({"/wc/a"});
  asked();
  items.setDirectories({});
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(items.show("/wc/a"), "");
  EXPECT_THAT(redrawn(), IsEmpty());
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsChanges, WhatComesBackWithAQuestionUnderWayIsAskedForAgain) {
  show({"/wc/a"});
  asked();
  items.setDirectories({});
  items.setDirectories({"/wc"});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
  items.takeAnswers({{"/wc/a", ""}});
  EXPECT_FALSE(items.isSettled()) << "the answer may be from outside";
  items.takeAnswers({{"/wc/a", "modified"}});
  EXPECT_EQ(items.show("/wc/a"), "modified");
  EXPECT_TRUE(items.isSettled());
}

TEST_F(ShownItemsChanges, WithTwoQuestionsUnderWayAChangeAsksAgainAfterTheLastAnswer) {
  show({"/wc/a"});
  asked();
  items.setDirectories({});
  items.setDirectories({"/wc"});
  asked();
  items.takeChanges({{"/wc", ""}});
  items.takeAnswers({{"/wc/a", ""}});
  EXPECT_THAT(asked(), IsEmpty());
  items.takeAnswers({{"/wc/a", ""}});
  EXPECT_THAT(requested(), ElementsAre("/wc/a"));
}

}  // namespace
